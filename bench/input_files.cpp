#include "input_files.h"

#include <unistd.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace brenta::bench {
namespace {

/// Removes itself, unless it is a parent's.
class Folder {
 public:
    Folder() {
        const char* const parents = std::getenv(kInputFolderVariable);
        m_own = parents == nullptr;
        if (!m_own) {
            m_path = parents;
            return;
        }
        m_path = std::filesystem::temp_directory_path() / ("brenta_bench_" + std::to_string(getpid()));
        std::filesystem::create_directories(m_path);
        setenv(kInputFolderVariable, m_path.c_str(), 1);
    }
    ~Folder() {
        std::error_code ignored;
        if (m_own) std::filesystem::remove_all(m_path, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }

 private:
    std::filesystem::path m_path;
    bool m_own = false;
};

/// A fixed sequence of numbers without an order to the eye.
class Numbers {
 public:
    int Next(int below) {
        m_state = m_state * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<int>((m_state >> 33) % static_cast<std::uint64_t>(below));
    }

 private:
    std::uint64_t m_state = 42;
};

/// What printf would print, appended.
[[gnu::format(printf, 2, 3)]] void Append(std::string& text, const char* format, ...) {
    char line[256];
    std::va_list values;
    va_start(values, format);
    const int size = std::vsnprintf(line, sizeof line, format, values);
    va_end(values);
    text.append(line, static_cast<std::size_t>(size));
}

}  // namespace

std::string PathOfInput(const std::string& name) {
    static const Folder folder;
    return folder.Path() / name;
}

std::string InputFile(const std::string& name, const std::function<std::string()>& make) {
    const std::string path = PathOfInput(name);
    if (!std::filesystem::exists(path)) {
        std::ofstream file(path, std::ios::binary);
        const std::string content = make();
        file.write(content.data(), static_cast<std::streamsize>(content.size()));
    }
    return path;
}

std::string ReadInput(const std::string& path) {
    std::string text(std::filesystem::file_size(path), '\0');
    std::ifstream file(path, std::ios::binary);
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    return text;
}

// ---------------------------------------------------------------------------------------------------------
// Contents

std::string NetName(int net) {
    return "N" + std::to_string(net);
}

std::string MakeBoard(int nets) {
    Numbers numbers;
    std::string text = "<?xml version=\"1.0\"?>\n<board name=\"panel\">\n";
    for (int net = 0; net < nets; ++net) {
        Append(text, "<signal name=\"N%d\" class=\"%d\" width=\"%d.%d\" layer=\"1\">\n", net, net % 8,
               numbers.Next(3), numbers.Next(100));
        for (int via = 0; via < 99; ++via) {
            Append(text, "<via name=\"VIA%d\" x=\"%d.%05d\" y=\"%d.%05d\" drill=\"0.%d\"/>\n", net * 99 + via,
                   numbers.Next(800), numbers.Next(100000), numbers.Next(800), numbers.Next(100000),
                   300 + numbers.Next(400));
        }
        text += "</signal>\n";
    }
    return text + "</board>\n";
}

std::string MakeLibrary() {
    std::string text = "<?xml version=\"1.0\"?>\n<library name=\"passives\">\n<packages>\n";
    for (int package = 0; package < 12000; ++package) {
        Append(text, "<package name=\"R%04d\">\n", package % 2000);
        for (int pad = 1; pad <= 16; ++pad) {
            Append(text,
                   "<smd name=\"%d\" x=\"-0.%d5\" y=\"%d.27\" dx=\"0.6\" dy=\"2.2\" layer=\"1\" "
                   "roundness=\"25\"/>\n",
                   pad, pad % 4, pad / 4);
        }
        text += "</package>\n";
    }
    return text + "</packages>\n</library>\n";
}

std::string MakePage() {
    Numbers numbers;
    std::string text = "<html>\n<body>\n<table class=\"parts\">\n";
    for (int row = 0; text.size() < 15'000'000; ++row) {
        Append(text,
               "<tr id=\"r%d\"><td>R%d</td><td align=right>%d&nbsp;ohm</td><td>0603 &amp; %d</td></tr>\n",
               row, row, numbers.Next(10000), numbers.Next(100));
    }
    return text + "</table>\n</body>\n</html>\n";
}

std::string MakeDeep(int levels) {
    std::string text;
    for (int i = 0; i < levels; ++i)
        text += "<level>";
    for (int i = 0; i < levels; ++i)
        text += "</level>";
    return text;
}

std::string MakeWide(int children) {
    std::string text = "<list>";
    for (int i = 0; i < children; ++i)
        Append(text, "<item n=\"%d\"/>", i);
    return text + "</list>";
}

std::string MakeManyAttributes(int first, int count) {
    std::string text = "<element";
    for (int i = first; i < first + count; ++i)
        Append(text, " a%d=\"%d\"", i, i);
    return text + "/>";
}

}  // namespace brenta::bench
