// Stand-ins for the model repository (records 1, 2 and 3) while no model is loaded. Every
// operation answers OrlNotExist ("none") and leaves its outputs untouched, so a plug-in finds the
// records and sees an empty model.
#pragma once

#include "platform/orl/OrlModelRepository.h"

namespace vesk {
namespace host {

class StubServices {
  public:
    StubServices();
    StubServices(const StubServices&) = delete;
    StubServices& operator=(const StubServices&) = delete;

    OrlOamSpiModelRepository_1* repository1() { return &_repository1; }
    OrlOamSpiModelRepository_2* repository2() { return &_repository2; }
    OrlOamSpiModelRepository_3* repository3() { return &_repository3; }

  private:
    void fillRepository2();

    OrlOamSpiModelRepository_1 _repository1;
    OrlOamSpiModelRepository_2 _repository2;
    OrlOamSpiModelRepository_3 _repository3;
};

}  // namespace host
}  // namespace vesk
