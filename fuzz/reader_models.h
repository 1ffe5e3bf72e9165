// Both readers once more, as literal, recursive and slow as can be, to compare the real ones with. A tree
// comes out as TreeText writes it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace brenta::fuzz {

inline std::string Bytes(int first, int last) {
    std::string bytes;
    for (; first <= last; ++first)
        bytes += static_cast<char>(first);
    return bytes;
}

inline const std::string kSpaces = Bytes(9, 13) + " ", kBlanks = Bytes(1, 32),
                         kLows = kBlanks + Bytes(128, 255);

class ReaderModel {
 public:
    explicit ReaderModel(const std::string& text) : m_text(text.c_str()) {}

    std::string tree;
    std::vector<std::string> messages;

 protected:
    using Attributes = std::vector<std::pair<std::string, std::string>>;

    /// 0 at the end of the text and beyond.
    char At(std::size_t ahead = 0) const {
        return m_at + ahead < m_text.size() ? m_text[m_at + ahead] : '\0';
    }
    bool End() const { return m_at >= m_text.size(); }
    bool IsMark() const { return At() == '?' || At() == '!'; }
    void Skip(const std::string& bytes) {
        m_at = std::min(m_text.find_first_not_of(bytes, m_at), m_text.size());
    }
    std::string CutAt(const std::string& stops) {
        const std::size_t start = m_at;
        m_at = std::min(m_text.find_first_of(stops, m_at), m_text.size());
        return m_text.substr(start, m_at - start);
    }
    bool Fault(const char* message) {
        messages.emplace_back(message);
        return false;
    }

    static std::string Decode(std::string text,
                              const std::vector<std::pair<std::string, std::string>>& more = {}) {
        Attributes entities = {
            {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&apos;", "'"}, {"&amp;", "&"}};
        entities.insert(entities.end(), more.begin(), more.end());
        for (const auto& [from, to] : entities)
            for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
                text.replace(at, from.size(), to);
        return text;
    }
    static void Set(Attributes& attributes, const std::string& name, const std::string& value) {
        for (auto& [present, old] : attributes)
            if (present == name) return void(old = value);
        attributes.emplace_back(name, value);
    }
    void Print(int depth, const std::string& tag, const Attributes& attributes) {
        tree += std::string(2 * static_cast<std::size_t>(depth), ' ') + tag;
        for (const auto& [name, value] : attributes)
            tree += " " + name + "=\"" + value + "\"";
        tree += "\n";
    }

    std::string m_text;
    std::size_t m_at = 0;
};

class QuickModel : public ReaderModel {
 public:
    using ReaderModel::ReaderModel;

    bool Read() {
        for (Skip(kLows); !End(); Skip(kLows)) {
            if (At() != '<') return Fault("Bad XML format.");
            ++m_at;
            if (IsMark()) {
                CutAt(">"), ++m_at;
            } else if (!Element(0)) {
                return false;
            }
        }
        return true;
    }

 private:
    bool UnexpectedEnd() { return Fault("Unexpected end-of-file."); }

    bool Element(int depth) {
        Skip(kBlanks);
        const std::string tag = Decode(CutAt("/>" + kLows));
        if (End()) return UnexpectedEnd();
        const char last = m_text[m_at++];
        if (last == '/' && At() != '>') return Fault("Expecting '>' after empty element '/'");
        Attributes attributes;
        bool empty = last == '/';
        if (empty) ++m_at;
        if (last != '/' && last != '>' && !ReadAttributes(attributes, empty)) return false;
        Print(depth, tag, attributes);
        if (empty) return true;
        while (!End()) {
            Skip(kBlanks);
            if (At() != '<') return Fault("Inner text not valid in this reader.");
            ++m_at;
            if (At() == '/') {
                ++m_at;
                const std::string end = Decode(CutAt(">"));
                if (End()) return UnexpectedEnd();
                ++m_at;
                return end == tag || Fault("Mismatched end tag.");
            }
            if (IsMark()) {
                CutAt(">"), ++m_at;
            } else if (!Element(depth + 1)) {
                return Fault("Inner text not valid in this reader.");
            }
        }
        return Fault("Syntax error.");
    }

    bool ReadAttributes(Attributes& attributes, bool& empty) {
        for (Skip(kBlanks); At() != '>' && (At() != '/' || At(1) != '>'); Skip(kBlanks)) {
            const std::string name = CutAt("=" + kLows);
            if (End()) return UnexpectedEnd();
            Skip(kLows);
            if (At() != '=') return Fault("Not a valid attribute.");
            ++m_at;
            Skip(kBlanks);
            if (At() != '"') return Fault("Missing quote for attribute value.");
            ++m_at;
            Set(attributes, name, Decode(CutAt("\"")));
            if (End()) return UnexpectedEnd();
            ++m_at;
        }
        empty = At() == '/';
        m_at += empty ? 2 : 1;
        return true;
    }
};

class HtmlModel : public ReaderModel {
 public:
    using ReaderModel::ReaderModel;

    bool Read() {
        tree = "Root\n";
        for (Skip(kLows); !End(); Skip(kLows)) {
            if (At() != '<') return Fault("Bad XML format.");
            ++m_at;
            if (!Siblings(1)) return false;
        }
        return true;
    }

 private:
    static std::string DecodeHtml(const std::string& text) {
        return Decode(text, {{"&nbsp;", " "}, {"&reg;", "(R)"}, {"&trade;", "(TM)"}, {"&copy;", "(C)"}});
    }
    bool IsLetter(std::size_t ahead) const {
        const char lower = static_cast<char>(At(ahead) | 32);
        return lower >= 'a' && lower <= 'z';
    }
    bool SkipPast(const char* stop) {
        CutAt(stop);
        return !End() && ++m_at != 0;
    }

    bool Siblings(int depth) {
        while (true) {
            Skip(kBlanks);
            while (IsMark())
                if (!SkipPast(">") || !SkipPast("<")) return false;
            if (End()) return true;
            const std::string tag = DecodeHtml(CutAt(">" + kSpaces));
            if (End()) return false;
            if (tag == "input" || tag == "meta" || tag == "LINK" || tag == "img") {
                if (!SkipPast(">") || !SkipPast("<")) return false;
            } else if (tag[0] == '/') {
                SkipPast("<");
                return true;
            } else if (!Element(depth, tag)) {
                return false;
            }
        }
    }

    bool Element(int depth, const std::string& tag) {
        Attributes attributes;
        const bool complete = ReadAttributes(attributes);
        Print(depth, tag, attributes);
        if (!complete) return false;
        const bool empty = At() == '/';
        if (empty && At(1) != '>') return false;
        if (empty) return SkipPast("<"), true;
        ++m_at;
        Skip(kSpaces);
        if (End()) return false;
        if (At() != '<' || !IsLetter(1)) {
            std::string data;
            do {
                if (At() == '<') data += m_text[m_at++];
                data += CutAt("<");
                if (End()) return false;
            } while (!IsLetter(1) && At(1) != '/');
            Print(depth + 1, "Text #" + DecodeHtml(data), {});
        }
        ++m_at;
        return Siblings(depth + 1);
    }

    bool ReadAttributes(Attributes& attributes) {
        for (Skip(kBlanks); At() != '/' && At() != '>'; Skip(kBlanks)) {
            const std::string name = DecodeHtml(CutAt("=>" + kLows));
            if (End()) return false;
            Skip(kLows);
            if (At() != '=') {
                Set(attributes, name, "1");
                CutAt("/>" + kSpaces);
                continue;
            }
            ++m_at;
            Skip(kLows);
            const bool quoted = At() == '"';
            m_at += quoted;
            const std::string value = DecodeHtml(CutAt(quoted ? "\"" : "/>" + kSpaces));
            if (End()) return false;
            m_at += quoted;
            Set(attributes, name, value);
        }
        return true;
    }
};

}  // namespace brenta::fuzz
