// Trees: loading files, looking through them, and what they take of memory.
#include <absl/container/flat_hash_set.h>
#include <gumbo.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "brenta/names.h"
#include "brenta/xml_readers.h"
#include "families.h"
#include "input_files.h"
#include "tree_peers.h"
#include "workload.h"

namespace brenta::bench {
namespace {

constexpr int kNets = 10000;

std::string Board() {
    return InputFile("board.xml", [] { return MakeBoard(kNets); });
}
std::string SmallBoard() {
    return InputFile("small_board.xml", [] { return MakeBoard(kNets / 10); });
}
std::string Library() {
    return InputFile("library.xml", MakeLibrary);
}
std::string Page() {
    return InputFile("page.html", MakePage);
}

void Add(const std::string& name, const char* peer, double limit, ContenderMaker ours, ContenderMaker theirs,
         Clock clock = Clock::Processor) {
    Workloads().push_back({"documents", name, peer, limit, std::move(ours), std::move(theirs), clock});
}

/// Loads a file and drops the tree.
template <class Tree>
ContenderMaker Loading(std::string (*path)()) {
    return Checked([path] { Tree tree(path()); }, [path] { return Tree(path()).Digest(); });
}

// ---------------------------------------------------------------------------------------------------------
// Looking through a board

/// What is looked at: the length of each text, and where the middle via of each net lies.
struct Findings {
    std::size_t bytes = 0;
    std::size_t found = 0;

    std::string Text() const { return std::to_string(bytes) + " bytes, " + std::to_string(found); }
};

std::string MiddleVia(int net) {
    return "VIA" + std::to_string(net * 99 + 49);
}

Findings LookThrough(const OurTree& tree) {
    Findings findings;
    const CCoreXmlDomElement& board = **tree.document.GetFirstElement().Get();
    const STRID via = StrId("via"), name = StrId("name"), x = StrId("x");
    int net = 0;
    for (auto signal = board.GetFirstChild(); signal.Get(); signal.Next(), ++net) {
        for (auto child = (*signal.Get())->GetFirstChild(); child.Get(); child.Next()) {
            for (auto attribute = (*child.Get())->GetFirstAttribute(); attribute.Get(); attribute.Next()) {
                findings.bytes += std::string_view((*attribute.Get())->PeekValue()).size();
            }
        }
        const CCoreXmlDomElement* found =
            (*signal.Get())->FindElement(via, name, MiddleVia(net).c_str(), false);
        if (found != nullptr) findings.found += static_cast<std::size_t>(found->GetIntAttributeValue(x));
    }
    return findings;
}

Findings LookThrough(const PugiTree& tree) {
    Findings findings;
    int net = 0;
    for (const pugi::xml_node signal : tree.document.child("board").children()) {
        for (const pugi::xml_node child : signal.children()) {
            for (const pugi::xml_attribute attribute : child.attributes())
                findings.bytes += std::string_view(attribute.value()).size();
        }
        const pugi::xml_node found = signal.find_child_by_attribute("via", "name", MiddleVia(net++).c_str());
        findings.found += static_cast<std::size_t>(found.attribute("x").as_int());
    }
    return findings;
}

void AddLookingThrough() {
    const auto peer =
        Checked([] { LookThrough(PugiTree(Board())); }, [] { return LookThrough(PugiTree(Board())).Text(); });
    Add("board, texts, 10,000 finds", "pugixml", 1.2,
        Checked([] { LookThrough(OurTree(Board())); }, [] { return LookThrough(OurTree(Board())).Text(); }),
        peer);
}

// ---------------------------------------------------------------------------------------------------------
// Names

/// 200,000 names that are known, looked up after the board was loaded twice.
void AddNames() {
    const auto makeNames = [] {
        auto names = std::make_shared<std::vector<std::string>>();
        for (int i = 0; i < 200000; ++i)
            names->push_back(NetName(i));
        return names;
    };
    const auto ours = [makeNames] {
        for (int i = 0; i < 2; ++i)
            const OurTree tree(Board());
        const auto names = makeNames();
        for (const std::string& name : *names)
            StrId(name.c_str());
        return [names] {
            unsigned long sum = 0;
            for (const std::string& name : *names)
                sum += static_cast<unsigned char>(StrPtr(StrId(name.c_str()))[1]);
            return sum;
        };
    };
    const auto theirs = [makeNames] {
        const auto names = makeNames();
        auto set = std::make_shared<absl::flat_hash_set<std::string>>(names->begin(), names->end());
        return [names, set] {
            unsigned long sum = 0;
            for (const std::string& name : *names)
                sum += static_cast<unsigned char>((*set->emplace(absl::string_view(name.c_str())).first)[1]);
            return sum;
        };
    };
    Add("known names after two boards", "absl set", 1.0, Prepared(ours), Prepared(theirs));
}

// ---------------------------------------------------------------------------------------------------------
// Pages

long CountRows(const CCoreXmlDomElement& element) {
    long count = 0;
    for (auto child = element.GetFirstChild(); child.Get(); child.Next())
        count += CountRows(**child.Get());
    return count + (element.GetTagNameId() == StrId("tr") ? 1 : 0);
}

long CountRows(const GumboNode& node) {
    if (node.type != GUMBO_NODE_ELEMENT) return 0;
    long count = node.v.element.tag == GUMBO_TAG_TR ? 1 : 0;
    const GumboVector& children = node.v.element.children;
    for (unsigned int i = 0; i < children.length; ++i)
        count += CountRows(*static_cast<const GumboNode*>(children.data[i]));
    return count;
}

std::unique_ptr<CCoreXmlDomElement> ReadOurPage() {
    CCoreHTMLReader reader;
    reader.LoadDocument(Page().c_str());
    return std::unique_ptr<CCoreXmlDomElement>(reader.GetRootElement());
}

struct GumboPage {
    GumboPage()
        : text(ReadInput(Page())),
          output(gumbo_parse_with_options(&kGumboDefaultOptions, text.data(), text.size())) {}
    ~GumboPage() { gumbo_destroy_output(&kGumboDefaultOptions, output); }
    GumboPage(const GumboPage&) = delete;
    GumboPage& operator=(const GumboPage&) = delete;

    std::string text;
    GumboOutput* output;
};

void AddPages() {
    Add("page of 15 MB", "gumbo", 0.1,
        Checked([] { ReadOurPage(); }, [] { return std::to_string(CountRows(*ReadOurPage())); }),
        Checked([] { GumboPage page; }, [] { return std::to_string(CountRows(*GumboPage().output->root)); }));
}

// ---------------------------------------------------------------------------------------------------------
// The platform's reader, on a tenth of the board and on real libraries where there are some

/// Part libraries as they are published, in the folder that BRENTA_DATA names; none if it names none.
std::vector<std::string> RealLibraries() {
    std::vector<std::string> paths;
    const char* const folder = std::getenv("BRENTA_DATA");
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder != nullptr ? folder : "", error))
        if (entry.path().extension() == ".lbr") paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    return paths;
}

void AddPlatformLoad(const std::string& name, const std::function<std::string()>& path) {
    Add(name, "xmlReadMemory", 1.3,
        Checked([path] { OurTree tree(path(), false); }, [path] { return OurTree(path(), false).Digest(); }),
        [path] {
            const auto text = std::make_shared<const std::string>(ReadInput(path()));
            return Checked([text] { LibXmlTree tree(*text); },
                           [text] { return LibXmlTree(*text).Digest(); })();
        });
}

}  // namespace

void AddDocumentWorkloads() {
    Add("load board", "pugixml", 1.0, Loading<OurTree>(Board), Loading<PugiTree>(Board));
    Add("load board", "TinyXML-2", 0.3, Loading<OurTree>(Board), Loading<TinyTree>(Board));
    Add("load library", "pugixml", 1.0, Loading<OurTree>(Library), Loading<PugiTree>(Library));
    Add("load library", "TinyXML-2", 0.3, Loading<OurTree>(Library), Loading<TinyTree>(Library));
    AddLookingThrough();
    Add("peak memory, board", "pugixml", 1.2, Loading<OurTree>(Board), Loading<PugiTree>(Board),
        Clock::Memory);
    AddNames();
    AddPlatformLoad("platform load", SmallBoard);
    for (const std::string& path : RealLibraries())
        AddPlatformLoad("platform load " + std::filesystem::path(path).stem().string(),
                        [path] { return path; });
    AddPages();
}

}  // namespace brenta::bench
