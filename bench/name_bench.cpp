// Names beside a set of strings from Abseil, which is what a program would otherwise intern its names in.
#include <absl/container/flat_hash_set.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "brenta/names.h"
#include "families.h"
#include "workload.h"

namespace brenta::bench {
namespace {

/// Terminated texts, one behind the other.
class TextList {
 public:
    void Add(const std::string& text) {
        m_starts.push_back(m_bytes.size());
        m_bytes.append(text).push_back('\0');
    }
    std::size_t Size() const { return m_starts.size(); }
    const char* operator[](std::size_t i) const { return m_bytes.data() + m_starts[i]; }

 private:
    std::string m_bytes;
    std::vector<std::size_t> m_starts;
};

/// A fixed sequence of numbers without an order to the eye.
class Shuffler {
 public:
    std::size_t Next(std::size_t below) {
        m_state = m_state * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<std::size_t>(m_state >> 33) % below;
    }

 private:
    std::uint64_t m_state = 42;
};

/// NET000000 and so on, with as many digits as the largest needs.
TextList Nets(std::size_t count, bool shuffled) {
    std::vector<std::size_t> numbers(count);
    for (std::size_t i = 0; i < count; ++i)
        numbers[i] = i;
    Shuffler shuffler;
    for (std::size_t i = count; shuffled && i > 1; --i)
        std::swap(numbers[i - 1], numbers[shuffler.Next(i)]);
    TextList texts;
    const std::size_t digits = std::to_string(count - 1).size();
    for (const std::size_t number : numbers) {
        const std::string text = std::to_string(number);
        texts.Add("NET" + std::string(digits - text.size(), '0') + text);
    }
    return texts;
}

TextList Words(std::size_t count) {
    Shuffler shuffler;
    TextList texts;
    for (std::size_t i = 0; i < count; ++i) {
        std::string word(4 + shuffler.Next(12), ' ');
        for (char& c : word)
            c = static_cast<char>('a' + shuffler.Next(26));
        texts.Add(word);
    }
    return texts;
}

/// Designators that have their letters in common with many others: a hash that adds them up takes them for
/// one.
TextList Anagrams() {
    TextList texts;
    for (char a = 'A'; a <= 'O'; ++a) {
        for (char b = 'A'; b <= 'O'; ++b) {
            for (char c = 'A'; c <= 'O'; ++c) {
                for (char d = 'A'; d <= 'O'; ++d)
                    texts.Add(std::string("U") + a + b + "_" + c + d + "7");
            }
        }
    }
    return texts;
}

using Texts = std::shared_ptr<const TextList>;
using StringSet = absl::flat_hash_set<std::string>;

void AddKnown(const char* name, const Texts& texts) {
    const auto ours = [texts] {
        for (std::size_t i = 0; i < texts->Size(); ++i)
            StrId((*texts)[i]);
        return [texts] {
            unsigned long sum = 0;
            for (std::size_t i = 0; i < texts->Size(); ++i)
                sum += static_cast<unsigned char>(*StrPtr(StrId((*texts)[i])));
            return sum;
        };
    };
    const auto theirs = [texts] {
        auto set = std::make_shared<StringSet>();
        for (std::size_t i = 0; i < texts->Size(); ++i)
            set->emplace((*texts)[i]);
        return [texts, set] {
            unsigned long sum = 0;
            for (std::size_t i = 0; i < texts->Size(); ++i)
                sum +=
                    static_cast<unsigned char>(*set->emplace(absl::string_view((*texts)[i])).first->data());
            return sum;
        };
    };
    Workloads().push_back({"names", name, "absl set", 1.0, Prepared(ours), Prepared(theirs)});
}

/// A table that is made and dropped outside the clock.
void AddNew(const char* name, std::size_t count) {
    const auto makeTexts = [count, kept = std::make_shared<TextList>()] {
        if (kept->Size() == 0) *kept = Nets(count, false);
        return kept;
    };
    const auto ours = [makeTexts] {
        return [texts = makeTexts(), table = std::make_shared<CStringTable>("bench", 1024000)] {
            for (std::size_t i = 0; i < texts->Size(); ++i)
                table->StrId((*texts)[i]);
            return table->GetNameCount();
        };
    };
    const auto theirs = [makeTexts] {
        return [texts = makeTexts(), set = std::make_shared<StringSet>()] {
            for (std::size_t i = 0; i < texts->Size(); ++i)
                set->emplace(absl::string_view((*texts)[i]));
            return set->size();
        };
    };
    Workloads().push_back({"names", name, "absl set", 1.0, Prepared(ours), Prepared(theirs)});
}

}  // namespace

void AddNameWorkloads() {
    AddKnown("200,000 known nets", std::make_shared<TextList>(Nets(200000, false)));
    AddKnown("200,000 known nets, shuffled", std::make_shared<TextList>(Nets(200000, true)));
    AddKnown("200,000 known words", std::make_shared<TextList>(Words(200000)));
    AddKnown("50,000 known anagrams", std::make_shared<TextList>(Anagrams()));
    AddNew("200,000 new", 200000);
    AddNew("10,000,000 new", 10000000);
}

}  // namespace brenta::bench
