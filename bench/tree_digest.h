// What a tree holds as one number, for trees of any library: tags, attributes and depths in document order.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace brenta::bench {

class TreeDigest {
 public:
    void Enter(std::string_view tag) {
        ++m_elements;
        Mix("<");
        Mix(tag);
    }
    void Attribute(std::string_view name, std::string_view value) {
        ++m_attributes;
        Mix(name);
        Mix("=");
        Mix(value);
    }
    void Leave() { Mix(">"); }

    std::string Text() const {
        return std::to_string(m_elements) + " elements, " + std::to_string(m_attributes) + " attributes, " +
               std::to_string(m_hash);
    }

 private:
    void Mix(std::string_view text) {
        for (const char c : text)
            m_hash = (m_hash ^ static_cast<unsigned char>(c)) * 0x100000001B3ull;
    }

    long m_elements = 0;
    long m_attributes = 0;
    std::uint64_t m_hash = 0xCBF29CE484222325ull;
};

}  // namespace brenta::bench
