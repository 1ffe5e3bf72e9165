#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "data_folder.h"

namespace brenta::test {

bool DataFolder::MakeReadOnly(const char* file) const {
    return SetFileAttributesA((*this / file).c_str(), FILE_ATTRIBUTE_READONLY);
}

bool IsForUserAlone(const std::string& path) {
    return std::filesystem::exists(path);
}

}  // namespace brenta::test
