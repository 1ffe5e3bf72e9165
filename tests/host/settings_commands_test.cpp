// brenta config and brenta registry, run as a user would.
#include <gtest/gtest.h>

#include <cstdlib>

#include "host_process.h"
#include "test_support.h"

namespace brenta::test {
namespace {

struct Row {
    Lines words;
    int status;
    Lines output;
};

/// Each command finds what those before it have left.
void RunRows(const std::vector<Row>& rows) {
    SetVariable("BRENTA_APPDATA", (ScratchFolder() / "settings").string().c_str());
    for (const Row& row : rows) {
        const HostResult result = RunHost(row.words);
        EXPECT_EQ(result.status, row.status) << row.words[1] << " " << row.words.back();
        EXPECT_EQ(result.output, row.output) << row.words[1] << " " << row.words.back();
        EXPECT_EQ(result.errors.size(), row.status == 1 ? 1u : 0u) << row.words[1] << " " << row.words.back();
    }
    SetVariable("BRENTA_APPDATA", nullptr);
}

TEST(ConfigCommand, KeepsValues) {
    RunRows({{{"config", "get", "Grid", "Step"}, 1, {}},
             {{"config", "set", "Grid", "Step", "-5"}, 0, {}},
             {{"config", "set", "Grid", "Unit", "--mm"}, 0, {}},
             {{"config", "get", "grid", "STEP"}, 0, {"-5"}},
             {{"config", "list"}, 0, {"Grid"}},
             {{"config", "delete", "Grid", "Step"}, 0, {}},
             {{"config", "list", "Grid"}, 0, {"Unit\t--mm"}},
             {{"config", "set", "Grid", "a=b", "x"}, 1, {}}});
}

TEST(RegistryCommand, KeepsTypedValues) {
    const std::string key = "HKCU\\Software\\Demo";
    RunRows(
        {{{"registry", "list", key}, 1, {}},
         {{"registry", "set", key, "Step", "-25", "--type", "int"}, 0, {}},
         {{"registry", "set", "-t", "float", key, "Scale", "0.1"}, 0, {}},
         {{"registry", "set", "hkcu\\software\\demo", "", "text"}, 0, {}},
         {{"registry", "set", key + "\\Sub", "On", "true", "--type=bool"}, 0, {}},
         {{"registry", "set", key, "Step", "5x", "-t", "int"}, 1, {}},
         {{"registry", "set", key, "Big", "4294967296", "-t", "dword"}, 1, {}},
         {{"registry", "set", "HKCU\\\\", "a", "1"}, 1, {}},
         {{"registry", "list", key}, 0, {"Sub\\", "\tstring\ttext", "Scale\tfloat\t0.1", "Step\tint\t-25"}},
         {{"registry", "get", key}, 0, {"string\ttext"}},
         {{"registry", "delete", key, "Step"}, 0, {}},
         {{"registry", "get", key, "Step"}, 1, {}},
         {{"registry", "delete", key}, 0, {}},
         {{"registry", "list", key + "\\Sub"}, 1, {}},
         {{"registry", "delete", "HKLM\\Software"}, 1, {}}});
}

}  // namespace
}  // namespace brenta::test
