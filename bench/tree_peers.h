// Trees of this library and of its peers, by the same few operations: load a file, look through what is
// there.
#pragma once

#include <libxml/tree.h>
#include <tinyxml2.h>
#include <pugixml.hpp>

#include <string>

#include "brenta/xml.h"

namespace brenta::bench {

/// A file that did not load leaves an empty tree, whose digest differs from all others.
struct OurTree {
    explicit OurTree(const std::string& path, bool quickly = true) {
        document.LoadDocument(path.c_str(), quickly);
    }
    std::string Digest() const;

    CCoreXmlDom document;
};

struct PugiTree {
    explicit PugiTree(const std::string& path) { document.load_file(path.c_str()); }
    std::string Digest() const;

    pugi::xml_document document;
};

struct TinyTree {
    explicit TinyTree(const std::string& path) { document.LoadFile(path.c_str()); }
    std::string Digest() const;

    tinyxml2::XMLDocument document;
};

/// The peer of the platform load parses what is in memory already.
struct LibXmlTree {
    explicit LibXmlTree(const std::string& text);
    ~LibXmlTree() { xmlFreeDoc(document); }
    LibXmlTree(const LibXmlTree&) = delete;
    LibXmlTree& operator=(const LibXmlTree&) = delete;
    std::string Digest() const;

    xmlDoc* document;
};

}  // namespace brenta::bench
