// Wide texts of the system and narrow ones of the library.
#pragma once

#include <string>
#include <string_view>

namespace brenta {

// By the process's code page. What a text cannot hold becomes the page's mark for that. Texts of 2^31 and
// more throw std::bad_alloc.

std::wstring Widened(std::string_view text);
std::string Narrowed(std::wstring_view text);

/// Whether the process's code page has characters of several bytes, so that not every text is one in it.
bool HasLongCharacters();

// One character for each byte, whatever the code page.

std::wstring WidenedBytes(std::string_view bytes);
/// False, and `bytes` as it was, if a character is none that WidenedBytes makes.
bool NarrowedBytes(std::wstring_view text, std::string& bytes);

}  // namespace brenta
