#include "platform/registry_roots.h"

#include <iterator>

namespace brenta::registry_store {

namespace {

constexpr std::string_view kClasses[] = {"Software", "Classes"};

}  // namespace

std::vector<std::string_view> NamesFromHive(const Place& place) {
    std::vector<std::string_view> names(place.path.Names());
    if (place.root == Root::ClassesRoot)
        names.insert(names.begin(), std::begin(kClasses), std::end(kClasses));
    return names;
}

bool IsProtected(const Place& place) {
    const std::vector<std::string_view> names = NamesFromHive(place);
    if (place.root == Root::CurrentUser || place.root == Root::Users || names.empty()) return names.empty();
    if (names.size() > std::size(kClasses)) return false;
    for (std::size_t i = 0; i < names.size(); ++i)
        if (FoldedName(names[i]) != FoldedName(kClasses[i])) return false;
    return true;
}

}  // namespace brenta::registry_store
