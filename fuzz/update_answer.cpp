// Any bytes as the answer of the server for newer versions: what is accepted can be stored without touching
// any other setting, and means the same when it is written in the plainest form.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "brenta/system.h"
#include "foundation/characters.h"
#include "platform/update_check.h"

namespace {

using brenta::UpdateOffer;

void Check(bool holds) {
    if (!holds) std::abort();
}

void CheckValue(const std::string& value) {
    Check(value.size() <= 259);
    for (const char c : value)
        Check(!brenta::IsControl(c));
}

bool AreSame(const UpdateOffer& a, const UpdateOffer& b) {
    return a.build == b.build && a.installString == b.installString && a.size == b.size &&
           a.installArguments == b.installArguments;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string answer(reinterpret_cast<const char*>(data), size);
    UpdateOffer offer;
    if (!brenta::ParseUpdateAnswer(answer, offer)) {
        Check(AreSame(offer, {}));
        return 0;
    }
    brenta::CoreVersion version;
    Check(brenta::GetVersionFromString(offer.build.c_str(), version));
    for (const std::string* value :
         {&offer.build, &offer.installString, &offer.size, &offer.installArguments})
        CheckValue(*value);
    UpdateOffer again;
    Check(brenta::ParseUpdateAnswer("build=" + offer.build + "\ninstall=" + offer.installString +
                                        "\nsize=" + offer.size + "\ninstallargs=" + offer.installArguments,
                                    again));
    Check(AreSame(offer, again));
    return 0;
}
