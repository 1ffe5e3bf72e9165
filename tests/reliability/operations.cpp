#include "reliability/operations.h"

#include <fstream>
#include <optional>

#include "brenta/error_log.h"
#include "brenta/http.h"
#include "brenta/registry.h"
#include "brenta/settings.h"
#include "brenta/units.h"
#include "brenta/xml_readers.h"
#include "brenta/xml_stream.h"
#include "brenta/zip.h"
#include "reliability/faults.h"
#include "script/engine_state.h"
#include "script/run_script.h"
#include "xml/tree_text.h"

namespace brenta::test {
namespace {

/// Adds what is delivered to a text.
struct Records : CCmdTarget {
    bool OnCmdMsg(unsigned int, int, void* extra, AFX_CMDHANDLERINFO*) override {
        const Calm calm;
        text += TreeText(*static_cast<CCoreXmlDomElement*>(extra));
        return false;
    }
    std::string text;
};

std::string Unzipped(const std::string& archive, ZipFileInfo info) {
    info.data = nullptr;
    const bool good = UnzipFile(archive.c_str(), info);
    const Calm calm;
    const std::string text = good ? std::string(info.data, info.data + info.size) : "-";
    delete[] info.data;
    return text;
}

/// For an entry of a text, which must outlive it.
ZipFileInfo Entry(const char* name, std::string& text) {
    return {name, 0, static_cast<std::uint32_t>(text.size()), reinterpret_cast<unsigned char*>(text.data())};
}

bool SetKeys(int value) {
    bool good = true;
    for (const char* path : {"K\\1", "K\\2"}) {
        CCoreRegistry key(HKEY_CURRENT_USER);
        good = key.SetKey(path, true) && key.WriteInt("v", value) && good;
    }
    return good;
}

std::string Keys() {
    std::string values;
    for (const char* path : {"K\\1", "K\\2"}) {
        CCoreRegistry key(HKEY_CURRENT_USER);
        key.SetKey(path, false);
        values += std::to_string(key.ReadInt("v", 0));
    }
    return values;
}

/// Runs Main of a fresh engine. One that fails says why, and works afterwards.
bool RunsMain(const ScriptRow& row, bool asTree, std::string& told) {
    std::optional<Calm> calm(std::in_place);
    ScriptRun fresh(row.text);
    fresh.engine.State().useRegisterTier = !asTree;
    std::string result;
    calm.reset();
    try {
        result = fresh.RunScript("Main", {});
    } catch (const std::bad_alloc&) {
        result = "Out of memory.";  // where the test itself needed some
    }
    calm.emplace();
    const bool isToldWhy =
        result == "failed" || result.find("Out of memory.") != std::string::npos;  // if it can be
    EXPECT_TRUE(result == row.told || isToldWhy) << result;
    EXPECT_EQ(fresh.engine.GetScopeDepth(), 1);
    EXPECT_TRUE(fresh.RunScript("Main", {}).ends_with(row.told));
    if (result == row.told) told = result;
    return !told.empty();
}

}  // namespace

Operations::Operations()
    : m_isFirst(true),
      m_data(kProgram),
      m_server({{"/file", Page(std::string(200'000, 'n'))}}),
      m_address(m_server.Address()) {
    Serve();
    AddChanges();
    AddReaders();
    AddScripts();
}

Operations::Operations(const Texts& words)
    : m_isFirst(false),
      m_data(Scratch::Known{words.at(0)}, kProgram),
      m_folder(Scratch::Known{words.at(1)}),
      m_server({}),
      m_address(words.at(2)) {
    Serve();
    AddChanges();
}

void Operations::Serve() {
    HostServices services = GetHostServices();
    services.showMessage = [](void*, const char*, unsigned int) { return IDOK; };
    services.shellOpen = [](void*, const char*) { return true; };
    services.isOnline = [](void*) { return true; };
    services.internetSettings = [](void*, InternetSettings&) { return false; };
    SetHostServices(services);
}

Operations::~Operations() = default;

std::string Operations::FileWith(const char* name, const std::string& content) const {
    if (m_isFirst) std::ofstream(m_folder / name, std::ios::binary) << content;
    return m_folder / name;
}

/// A change of a file from what it is now.
void Operations::AddChange(const char* name, Operation::Promise promise, const std::string& path,
                           std::function<bool()> run) {
    const auto reset = [path, old = ReadFile(path)] { std::ofstream(path, std::ios::binary) << old; };
    changes.push_back({name, promise, reset, std::move(run), [path] { return ReadFile(path); }});
}

void Operations::AddRead(const char* name, Operation::Promise promise,
                         std::function<bool(std::string&)> run) {
    const auto result = std::make_shared<std::string>();
    reads.push_back(
        {name, promise, [=] { result->clear(); }, [=] { return run(*result); }, [=] { return *result; }});
}

void Operations::AddChanges() {
    if (m_isFirst) SetAppValue("S", "k", "old") && SetAppValue("T", "other", 1);
    AddChange("ini", Operation::AllOrNothing,
              m_data / "a program whose name needs a block/a program whose name needs a block.ini",
              [] { return SetAppValue("S", "k", "new"); });

    const auto key = std::make_shared<CCoreRegistry>(HKEY_CURRENT_USER);
    const auto renew = [=] { SetKeys(1) && key->SetKey("K", true) && key->SaveKey() && SetKeys(2); };
    changes.push_back({"registry", Operation::AllOrNothing, renew, [=] { return key->RestoreKey(); }, Keys});

    const auto text = std::make_shared<std::string>(50'000, 't');
    const std::string archive = m_folder / "a.zip";
    ZipFileInfo old = Entry("old", *text);
    if (m_isFirst) ZipFile(archive.c_str(), old);
    AddChange("zip", Operation::AllOrNothing, archive,
              [=, fresh = Entry("new", *text)]() mutable { return ZipFile(archive.c_str(), fresh); });
    changes.back().state = [=] {
        return std::to_string(Unzipped(archive, Entry("old", *text)).size()) +
               Unzipped(archive, Entry("new", *text));
    };

    const std::string tree = FileWith("saved.xml", "<old/>");
    AddChange("save a document", Operation::Untold, tree, [=] {
        std::optional<Calm> calm(std::in_place);
        CCoreXmlDom document;
        document.CreateElement("new")->CreateChildElement("child")->AddAttribute("n", 1);
        calm.reset();
        return document.SaveDocument(tree.c_str(), nullptr, nullptr);
    });

    const std::string file = FileWith("file", "old"), url = m_address + "/file";
    AddChange("download", Operation::AllOrNothing, file,
              [=] { return DownloadFile(url.c_str(), file.c_str(), nullptr, nullptr) != 0; });
}

void Operations::AddReaders() {
    const std::string xml =
        FileWith("a.xml", "<?xml version='1.0'?><a><b c='1' d='&lt;'><e/></b><f g='h'/></a>");
    const std::string dialect = FileWith("b.xml", "<a><b c=\"1\" d=\"&lt;\"><e/></b></a>");
    const std::string html = FileWith("a.html", "<p a=\"1\" b>t &nbsp; <i>u</i></p>");
    ZipFileInfo entry;
    entry.name = "old";
    AddRead("quick reader", Operation::AllOrNothing, [=](std::string& told) {
        CCoreXMLQuickReader reader;
        const bool read = reader.LoadDocument(dialect.c_str());
        const Calm calm;
        told = TreeText(reader.GetFirstElement());
        for (CCoreXmlDomElement* element : reader.TakeElements())
            delete element;
        return read;
    });
    AddRead("load a document", Operation::AllOrNothing, [=](std::string& told) {
        CCoreXmlDom document;
        const bool read = document.LoadDocument(xml.c_str(), false);
        const Calm calm;
        told = TreeText(document.GetFirstElement());
        return read;
    });
    AddRead("stream reader", Operation::PartWhenFalse,
            [=, path = CString(xml.c_str())](std::string& told) mutable {
                Records records;
                CString error;
                const bool read = CXMLReader(nullptr, &records).ParseDocument(path, error);
                told.swap(records.text);
                return read;
            });
    AddRead("HTML reader", Operation::PartWhenFalse, [=](std::string& told) {
        CCoreHTMLReader reader;
        const bool read = reader.LoadDocument(html.c_str());
        const Calm calm;
        const std::unique_ptr<CCoreXmlDomElement> root(reader.GetRootElement());
        if (root) told = TreeText(*root);
        return read;
    });
    AddRead("unzip", Operation::AllOrNothing, [archive = m_folder / "a.zip", entry](std::string& told) {
        std::string text = Unzipped(archive, entry);
        if (text != "-") told.swap(text);
        return !told.empty();
    });
    AddRead("read settings", Operation::AllOrNothing, [](std::string& told) {
        int number = 0;
        if (!GetAppValue("T", "other", number)) return false;
        told = std::to_string(number);
        return true;
    });
}

void Operations::AddScripts() {
    const std::string sheet =
        FileWith("a.xsl",
                 "<x:stylesheet version='1.0' xmlns:x='http://www.w3.org/1999/XSL/"
                 "Transform'><x:output method='text'/><x:key name='k' match='a' use='@b'/>"
                 "<x:template match='/'><x:value-of select=\"concat(key('k', 1)/@b,"
                 " 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11)\"/></x:template>"
                 "</x:stylesheet>");
    AddRead("transform", Operation::PartWhenFalse, [=](std::string& told) {
        CCoreXmlDom document;
        CoreString out;
        const bool good = document.LoadString("<a b='1'/>") &&
                          document.TransformDocument(sheet.c_str(), out) &&
                          !out.IsEmpty();  // what goes wrong inside gives nothing
        const Calm calm;
        told = out();
        return good;
    });
    reads.back().threads = Fault::AllThreads;
    AddRead("lengths", Operation::AllOrNothing, [](std::string& told) {
        int value = 0;
        if (!EvaluateUnit("3 * (2mm + 1in) - 4", kMils, value, nullptr)) return false;
        told = std::to_string(value);
        return true;
    });
    AddRead(
        "load a script", Operation::AllOrNothing,
        [script = FileWith("a.scr", "class P { var a = 1; } function F() { return 1; }")](std::string& told) {
            std::optional<Calm> calm(std::in_place);
            ParserFixture fresh;
            calm.reset();
            const bool good = fresh.engine.LoadScriptModule(script.c_str());
            calm.emplace();
            if (good) told = "loaded";
            return good;
        });
    static const ScriptRow rows[] = {
        {R"(function G() { return x + 1; }
            function F(n) { var x = n; var s = "t" + n; if (n > 0) return F(n - 1) + G();
                            execute("x = x + 1; s = s + x;"); Env.Probe.Run("var y = 5;"); return x; }
            function Main() { foreach (e in {1}) { var l = {e}; execute("l = l + 1;"); } return F(5) + 1; })",
         "=22"},
        {R"(var g = 0;
            class P { var a = 1; var b = {0}; }
            function Late() { g += 1; Env.Probe.Load("function Z" + g + "() { return u" + g + "; }"); }
            function C(n) { var p as P; p.a = n; { var h = p;
                            if (n > 0) { h = C(n - 1); Env.Probe.Run("var z = 1;"); } else Late();
                            p.b = {h.a}; } return p; }
            function Main() { var u1 = 1; var u2 = 2; var r = C(3); return {r.a, u1, u2}; })",
         "={3, 1, 2}"},
    };
    for (const ScriptRow& row : rows)
        for (const bool asTree : {false, true})
            AddRead("script", Operation::AllOrNothing,
                    [&row, asTree](std::string& told) { return RunsMain(row, asTree, told); });
}

}  // namespace brenta::test
