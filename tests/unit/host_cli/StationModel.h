// The station model of the source tree, loaded once for the tests of the command layer.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "host/cli/ModelView.h"
#include "host/model/ModelSchema.h"

namespace vesk {
namespace host {
namespace cli {

inline const ModelView& stationModel() {
    static model::ModelSchema* schema = [] {
        auto* loaded = new model::ModelSchema;
        std::string error;
        EXPECT_TRUE(loaded->load(std::string(VESK_DATA_DIR) + "/model", "vesk-station", &error))
            << error;
        return loaded;
    }();
    static ModelView view(*schema);
    return view;
}

// The attribute `name` of the class of `dn`; fails the test when the model refuses either.
inline Id attributeAt(const std::string& dn, const std::string& name) {
    Id moc = kNone;
    Id attribute = kNone;
    std::string error;
    EXPECT_TRUE(stationModel().resolveDn(dn, &moc, &error)) << error;
    EXPECT_TRUE(moc != kNone && stationModel().resolveAttribute(moc, name, &attribute, &error))
        << error;
    return attribute;
}

}  // namespace cli
}  // namespace host
}  // namespace vesk
