// Shared set-up of the model data tests: the station model, loaded once per
// test suite from the source tree, and small helpers over it.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "SchemaWalk.h"

namespace vesk::modeltest {

inline const std::string kDataDir = VESK_DATA_DIR;
inline const std::string kMe = "ManagedElement";
inline const std::string kEnb = kMe + "/ENodeBFunction";
inline const std::string kCell = kEnb + "/EUtranCellFDD";
inline const std::string kBrm = kMe + "/SystemFunctions/BrM/BrmBackupManager";
inline const std::string kLocalCell = kMe + "/NodeBFunction/NodeBLocalCellGroup/NodeBLocalCell";

inline std::vector<std::string> split(const std::string& text, char sep) {
    std::vector<std::string> parts;
    std::stringstream in(text);
    for (std::string part; std::getline(in, part, sep);) {
        parts.push_back(part);
    }
    return parts;
}

class ModelData : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { _model = new Model(kDataDir + "/model"); }
    static void TearDownTestSuite() {
        delete _model;
        _model = nullptr;
    }
    void SetUp() override { ASSERT_TRUE(_model->loaded()) << _model->error(); }

    const lysc_node* cls(const std::string& path) {
        const lysc_node* node = _model->classAt(path);
        EXPECT_NE(node, nullptr) << path;
        return node;
    }
    const lysc_node* attr(const std::string& path, const std::string& name) {
        const lysc_node* node = cls(path);
        const lysc_node* result = node ? attribute(node, name) : nullptr;
        EXPECT_NE(result, nullptr) << path << " " << name;
        return result;
    }
    // Every class of the model with its containment path.
    std::vector<std::pair<std::string, const lysc_node*>> allClasses() {
        std::vector<std::pair<std::string, const lysc_node*>> result;
        std::function<void(const std::string&, const lysc_node*)> walk =
            [&](const std::string& prefix, const lysc_node* node) {
                std::string path = prefix.empty() ? node->name : prefix + "/" + node->name;
                result.emplace_back(path, node);
                for (const lysc_node* child : childClasses(node)) {
                    walk(path, child);
                }
            };
        walk("", _model->classAt(kMe));
        return result;
    }

    static inline Model* _model = nullptr;
};

}  // namespace vesk::modeltest
