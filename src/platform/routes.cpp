#include "platform/routes.h"

#include <array>
#include <charconv>
#include <cstdint>

namespace brenta {

namespace {

constexpr std::uint32_t kRouteIsUp = 0x1;
constexpr std::uint32_t kRouteRefuses = 0x200;

/// The columns of both tables, counted from 0:
///   IPv4: interface destination gateway flags references uses metric mask ...
///   IPv6: destination length source length gateway metric references uses flags interface
constexpr std::size_t kMostColumns = 11;
using Columns = std::array<std::string_view, kMostColumns>;

std::size_t SplitLine(std::string_view line, Columns& columns) {
    std::size_t count = 0;
    while (count < kMostColumns) {
        const std::size_t start = line.find_first_not_of(" \t");
        if (start == std::string_view::npos) break;
        line.remove_prefix(start);
        columns[count] = line.substr(0, line.find_first_of(" \t"));
        line.remove_prefix(columns[count].size());
        ++count;
    }
    return count;
}

bool IsZero(std::string_view hexadecimal) {
    return hexadecimal.find_first_not_of('0') == std::string_view::npos;
}

bool Leads(std::string_view interface, std::string_view flagText) {
    std::uint32_t flags = 0;
    std::from_chars(flagText.data(), flagText.data() + flagText.size(), flags, 16);
    return interface != "lo" && (flags & kRouteIsUp) != 0 && (flags & kRouteRefuses) == 0;
}

}  // namespace

bool HasDefaultRoute(std::string_view table) {
    while (!table.empty()) {
        const std::string_view line = table.substr(0, table.find('\n'));
        table.remove_prefix(line.size() < table.size() ? line.size() + 1 : line.size());
        Columns columns;
        const std::size_t count = SplitLine(line, columns);
        if (count == 11 && IsZero(columns[1]) && IsZero(columns[7]) && Leads(columns[0], columns[3]))
            return true;
        if (count == 10 && IsZero(columns[0]) && IsZero(columns[1]) && Leads(columns[9], columns[8]))
            return true;
    }
    return false;
}

}  // namespace brenta
