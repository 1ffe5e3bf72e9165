// The text forms of the registry, before any store is asked: key paths, value names, error codes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace brenta {

/// The system's own codes, on every platform.
enum class RegistryError : std::uint32_t {
    None = 0,
    NotFound = 2,
    NoFolder = 3,
    AccessDenied = 5,
    NoSuchRoot = 6,
    OutOfMemory = 14,
    BadArgument = 87,
    DiskFull = 112,
    BadPath = 161,
    MoreData = 234,
    BadDatabase = 1009,
    IoFailed = 1016,
    ParentIsVolatile = 1021,
};

inline constexpr std::size_t kLongestKeyName = 255;
inline constexpr std::size_t kLongestValueName = 16383;
inline constexpr std::size_t kDeepestKey = 512;

/// A key path taken apart.
///
///     path = [ name { separator name } { separator } ] ;   separator = "\" { "\" } ;
///
/// Any other byte, "/" too, belongs to a name. The names are views into the text that the path was made from.
class RegistryPath {
 public:
    /// Null counts as "", which is the root itself.
    explicit RegistryPath(const char* text);

    /// BadPath for a path that begins with a separator, BadArgument for a name or a path beyond the limits;
    /// None for a good path.
    RegistryError Error() const { return m_error; }
    /// From the root downward; empty if Error() says that there is none.
    const std::vector<std::string_view>& Names() const { return m_names; }
    /// Whether the path leads to the root, or is no path.
    bool IsEmpty() const { return m_names.empty(); }

 private:
    RegistryError Split(std::string_view text);

    std::vector<std::string_view> m_names;
    RegistryError m_error;
};

/// What is compared of a name: names that differ in the case of A to Z only are the same.
std::string FoldedName(std::string_view name);

}  // namespace brenta
