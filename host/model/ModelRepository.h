// The host's model repository service: records 1, 2 and 3 of "OrlOamSpiModelRepository" over a
// loaded ModelSchema. Handles are ModelTables handles and stay valid while the repository lives.
// The records are plain C without a context, so they answer from the one live repository of the
// process; with none alive every slot answers OrlFailure. Slots may be called from any thread:
// the tables do not change after loading.
#pragma once

#include "host/model/ModelSchema.h"
#include "platform/orl/OrlModelRepository.h"

namespace vesk {
namespace host {
namespace model {

class ModelRepository {
  public:
    // Becomes the live repository of the process, answering from `schema`, which must be loaded
    // and outlive it. A second one while this one lives is a logic error.
    explicit ModelRepository(const ModelSchema& schema);
    ~ModelRepository();
    ModelRepository(const ModelRepository&) = delete;
    ModelRepository& operator=(const ModelRepository&) = delete;

    OrlOamSpiModelRepository_1* record1() { return &_record1; }
    OrlOamSpiModelRepository_2* record2() { return &_record2; }
    OrlOamSpiModelRepository_3* record3() { return &_record3; }

    const ModelSchema& schema() const { return _schema; }

  private:
    const ModelSchema& _schema;
    OrlOamSpiModelRepository_1 _record1;
    OrlOamSpiModelRepository_2 _record2;
    OrlOamSpiModelRepository_3 _record3;
};

}  // namespace model
}  // namespace host
}  // namespace vesk
