#include <sys/stat.h>
#include <unistd.h>

#include "data_folder.h"

namespace brenta::test {

bool DataFolder::MakeReadOnly(const char* file) const {
    constexpr uid_t kNobody = 65534;
    bool isGood = chmod((*this / file).c_str(), 0444) == 0;
    if (geteuid() != 0) return isGood;
    isGood &= chown((m_scratch / "").c_str(), kNobody, kNobody) == 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(m_scratch / ""))
        isGood &= chown(entry.path().c_str(), kNobody, kNobody) == 0;
    return isGood && setuid(kNobody) == 0;
}

bool IsForUserAlone(const std::string& path) {
    struct stat info;
    const bool known = stat(path.c_str(), &info) == 0;
    return known && (info.st_mode & 07777) == (S_ISDIR(info.st_mode) ? 0700 : 0600);
}

}  // namespace brenta::test
