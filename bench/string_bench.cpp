// CoreString beside std::string.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

#include "brenta/string.h"
#include "families.h"
#include "workload.h"

namespace brenta::bench {
namespace {

template <class String>
long CopyAndDestroy(const char* text) {
    constexpr long kTimes = 1000000;
    const String original(text);
    for (long i = 0; i < kTimes; ++i) {
        String copy(original);
        benchmark::DoNotOptimize(&copy);
    }
    return kTimes;
}

/// Texts that are kept for a while: two hundred at a time.
template <class String>
long CopyMany(const char* text) {
    const String original(text);
    long count = 0;
    for (int round = 0; round < 2000; ++round) {
        String copies[200];
        for (String& copy : copies) {
            copy = original;
            ++count;
        }
        benchmark::DoNotOptimize(&copies);
    }
    return count;
}

long LengthOf(const CoreString& text) {
    return text.GetLength();
}
long LengthOf(const std::string& text) {
    return static_cast<long>(text.size());
}

template <class String>
long AppendCharacters() {
    long length = 0;
    for (int round = 0; round < 10; ++round) {
        String text;
        for (int i = 0; i < 200000; ++i)
            text += static_cast<char>('a' + i % 26);
        length += LengthOf(text);
    }
    return length;
}

/// A part list of about 60 KB with one line that is different, near its end.
std::string PartList() {
    std::string text;
    for (int i = 0; i < 4000; ++i)
        text += "R" + std::to_string(i) + " 4k7 0603;\n";
    return text + "R9999 10k 0805;\n";
}

long FindOurs() {
    static const CoreString text(PartList().c_str());
    long sum = 0;
    for (int i = 0; i < 200; ++i)
        sum += text.Find("10k 0805") + text.Find('8', false, i);
    return sum;
}

long FindTheirs() {
    static const std::string text = PartList();
    long sum = 0;
    for (std::size_t i = 0; i < 200; ++i)
        sum += static_cast<long>(text.find("10k 0805") + text.find('8', i) - i);
    return sum;
}

std::size_t ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
    std::size_t count = 0;
    std::string result;
    std::size_t start = 0;
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, start), ++count) {
        result.append(text, start, at - start).append(to);
        start = at + from.size();
    }
    text = result.append(text, start);
    return count;
}

long ReplaceOurs(const char* to) {
    static const CoreString original(PartList().c_str());
    long sum = 0;
    for (int i = 0; i < 50; ++i) {
        CoreString text(original);
        sum += text.Replace("0603", to) + text.GetLength();
    }
    return sum;
}

long ReplaceTheirs(const char* to) {
    static const std::string original = PartList();
    long sum = 0;
    for (int i = 0; i < 50; ++i) {
        std::string text(original);
        sum += static_cast<long>(ReplaceAll(text, "0603", to) + text.size());
    }
    return sum;
}

/// Every text with every other, for equality and for order.
template <class String>
long CompareAll() {
    constexpr int kTexts = 1000;
    static const auto* const texts = [] {
        auto* made = new String[kTexts];
        for (int i = 0; i < kTexts; ++i) {
            std::string letters = std::to_string(i);
            for (char& c : letters)
                c = static_cast<char>(c - '0' + 'a');
            made[i] = String(("net_" + letters).c_str());
        }
        return made;
    }();
    long sum = 0;
    for (int a = 0; a < kTexts; ++a) {
        for (int b = 0; b < kTexts; ++b) {
            sum += texts[a] == texts[b] ? 3 : 0;
            sum += texts[a] < texts[b] ? 1 : 0;
        }
    }
    return sum;
}

long FormatOurs() {
    long sum = 0;
    for (int i = 0; i < 100000; ++i) {
        CoreString text;
        text.Format("%s%d at %.3f,%.3f", "U", i, i * 0.25, i * 0.125);
        sum += text.GetLength();
    }
    return sum;
}

long FormatTheirs() {
    long sum = 0;
    for (int i = 0; i < 100000; ++i) {
        char buffer[256];
        std::snprintf(buffer, sizeof(buffer), "%s%d at %.3f,%.3f", "U", i, i * 0.25, i * 0.125);
        const std::string text(buffer);
        sum += static_cast<long>(text.size());
    }
    return sum;
}

template <class Ours, class Theirs>
void Add(const char* name, Ours ours, Theirs theirs, double limit = 1.0) {
    Workloads().push_back({"strings", name, "std::string", limit, Side(ours), Side(theirs)});
}

template <class Ours, class Theirs>
void AddWith(const char* name, Ours ours, Theirs theirs, const char* text) {
    Add(
        name, [=] { return ours(text); }, [=] { return theirs(text); });
}

}  // namespace

void AddStringWorkloads() {
    // The workloads keep the addresses.
    static constexpr char kShort[] = "NET000042";
    static constexpr char kLong[] = "a description of forty-four bytes, give or take";
    AddWith("copy and destroy 9 bytes", CopyAndDestroy<CoreString>, CopyAndDestroy<std::string>, kShort);
    AddWith("copy and destroy 47 bytes", CopyAndDestroy<CoreString>, CopyAndDestroy<std::string>, kLong);
    AddWith("200 copies of 9 bytes", CopyMany<CoreString>, CopyMany<std::string>, kShort);
    AddWith("200 copies of 47 bytes", CopyMany<CoreString>, CopyMany<std::string>, kLong);
    Add("append 200,000 characters", AppendCharacters<CoreString>, AppendCharacters<std::string>, 1.5);
    Add("find", FindOurs, FindTheirs);
    AddWith("replace all, as long", ReplaceOurs, ReplaceTheirs, "1206");
    AddWith("replace all, longer", ReplaceOurs, ReplaceTheirs, "0603 thin film");
    AddWith("replace all, shorter", ReplaceOurs, ReplaceTheirs, "");
    Add("compare", CompareAll<CoreString>, CompareAll<std::string>);
    Add("format", FormatOurs, FormatTheirs);
}

}  // namespace brenta::bench
