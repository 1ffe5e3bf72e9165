#include "test_support.h"

#include <cstdlib>
#include <filesystem>

#include "brenta/host.h"
#include "brenta/string.h"

namespace brenta::test {

CrashRecorder::CrashRecorder() {
    SetForcedCrashHandler(&CrashRecorder::Record, this);
}

CrashRecorder::~CrashRecorder() {
    SetForcedCrashHandler(nullptr, nullptr);
}

void CrashRecorder::Record(const ForcedCrashRecord& record, void* context) {
    auto* recorder = static_cast<CrashRecorder*>(context);
    recorder->m_messages.emplace_back(record.Message());
    recorder->m_last = record;
}

RecordingHost::RecordingHost() {
    HostServices services;
    services.context = this;
    services.showMessage = [](void* self, const char* text, unsigned int type) {
        static_cast<RecordingHost*>(self)->shown.push_back(text + ("|" + std::to_string(type)));
        return 42;
    };
    services.loadString = [](void*, unsigned int id, CoreString& text) {
        text = "resource";
        return id == 7;
    };
    SetHostServices(services);
}

RecordingHost::~RecordingHost() {
    SetHostServices({});
}

Scratch::Scratch() {
    std::string name = testing::TempDir() + "brenta_XXXXXX";
    m_path = mkdtemp(name.data());
}

Scratch::~Scratch() {
    std::filesystem::remove_all(m_path);
}

std::string RandomText(std::mt19937& random, const std::string& alphabet, std::size_t longest) {
    std::string text(random() % (longest + 1), ' ');
    for (char& c : text)
        c = alphabet[random() % alphabet.size()];
    return text;
}

}  // namespace brenta::test
