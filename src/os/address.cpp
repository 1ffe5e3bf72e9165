// What both platforms ask of a text before they hand it to a desktop.
#include "os/programs.h"

namespace brenta::os {

bool HasScheme(std::string_view text) {
    constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
    constexpr std::string_view kFurther = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789+-.";
    const std::size_t end = text.find_first_not_of(kFurther);
    return end != std::string_view::npos && end >= 2 && text[end] == ':' &&
           kLetters.find(text[0]) != std::string_view::npos;
}

}  // namespace brenta::os
