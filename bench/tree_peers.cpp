#include "tree_peers.h"

#include <libxml/parser.h>

#include "tree_digest.h"

namespace brenta::bench {
namespace {

// The inputs that are looked through are not deep.

void Add(TreeDigest& digest, const CCoreXmlDomElement& element) {
    digest.Enter(element.GetTagName());
    for (auto iter = element.GetFirstAttribute(); iter.Get(); iter.Next())
        digest.Attribute((*iter.Get())->GetName(), (*iter.Get())->PeekValue());
    for (auto iter = element.GetFirstChild(); iter.Get(); iter.Next())
        Add(digest, **iter.Get());
    digest.Leave();
}

void Add(TreeDigest& digest, pugi::xml_node element) {
    digest.Enter(element.name());
    for (const pugi::xml_attribute attribute : element.attributes())
        digest.Attribute(attribute.name(), attribute.value());
    for (const pugi::xml_node child : element.children())
        if (child.type() == pugi::node_element) Add(digest, child);
    digest.Leave();
}

void Add(TreeDigest& digest, const tinyxml2::XMLElement& element) {
    digest.Enter(element.Name());
    for (const tinyxml2::XMLAttribute* a = element.FirstAttribute(); a != nullptr; a = a->Next())
        digest.Attribute(a->Name(), a->Value());
    for (const tinyxml2::XMLElement* e = element.FirstChildElement(); e != nullptr;
         e = e->NextSiblingElement())
        Add(digest, *e);
    digest.Leave();
}

std::string_view View(const xmlChar* text) {
    return text == nullptr ? "" : reinterpret_cast<const char*>(text);
}

void Add(TreeDigest& digest, const xmlNode& element) {
    digest.Enter(View(element.name));
    for (const xmlAttr* a = element.properties; a != nullptr; a = a->next)
        digest.Attribute(View(a->name), a->children != nullptr ? View(a->children->content) : "");
    for (const xmlNode* e = element.children; e != nullptr; e = e->next)
        if (e->type == XML_ELEMENT_NODE) Add(digest, *e);
    digest.Leave();
}

}  // namespace

std::string OurTree::Digest() const {
    TreeDigest digest;
    for (auto iter = document.GetFirstElement(); iter.Get(); iter.Next())
        Add(digest, **iter.Get());
    return digest.Text();
}

std::string PugiTree::Digest() const {
    TreeDigest digest;
    for (const pugi::xml_node child : document.children())
        if (child.type() == pugi::node_element) Add(digest, child);
    return digest.Text();
}

std::string TinyTree::Digest() const {
    TreeDigest digest;
    if (const tinyxml2::XMLElement* root = document.RootElement()) Add(digest, *root);
    return digest.Text();
}

LibXmlTree::LibXmlTree(const std::string& text)
    : document(xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr,
                             XML_PARSE_NONET | XML_PARSE_HUGE)) {}

std::string LibXmlTree::Digest() const {
    TreeDigest digest;
    if (const xmlNode* root = document != nullptr ? xmlDocGetRootElement(document) : nullptr)
        Add(digest, *root);
    return digest.Text();
}

}  // namespace brenta::bench
