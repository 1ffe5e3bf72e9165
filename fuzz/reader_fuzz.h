// What the targets of the readers share.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "../tests/xml/tree_text.h"
#include "brenta/framework.h"
#include "brenta/host.h"
#include "reader_models.h"

namespace brenta::fuzz {

/// Reads a text with `read`, which gives success and the tree, and with a model, and aborts where success,
/// messages or the tree differ; the tree of a text that is not read counts if `keepsTree`.
template <class Model, class Read>
void CompareWithModel(const std::uint8_t* data, std::size_t size, bool keepsTree, Read read) {
    constexpr std::size_t kMaxInput = 4096;
    static std::vector<std::string> shown;
    if (size > kMaxInput) return;
    HostServices services;
    services.showMessage = [](void*, const char* text, unsigned int) {
        shown.emplace_back(text);
        return IDOK;
    };
    SetHostServices(services);
    shown.clear();
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::string tree;
    const bool success = read(text, tree);
    Model model(text);
    if (model.Read() != success || model.messages != shown) std::abort();
    if ((success || keepsTree) && model.tree != tree) std::abort();
}

}  // namespace brenta::fuzz
