#include "test_support.h"

#include <filesystem>

#include "brenta/host.h"
#include "brenta/string.h"
#include "os/os.h"

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
        auto* const host = static_cast<RecordingHost*>(self);
        host->shown.push_back(text + ("|" + std::to_string(type)));
        return host->answer;
    };
    services.loadString = [](void*, unsigned int id, CoreString& text) {
        text = "resource";
        return id == 7;
    };
    services.shellOpen = [](void* self, const char* target) {
        static_cast<RecordingHost*>(self)->opened.emplace_back(target);
        return true;
    };
    SetHostServices(services);
}

RecordingHost::~RecordingHost() {
    SetHostServices({});
}

Scratch::Scratch() {
    std::random_device random;
    do
        m_path = testing::TempDir() + "brenta_" + std::to_string(random());
    while (!std::filesystem::create_directory(m_path));
}

Scratch::~Scratch() {
    std::error_code ignored;
    if (m_isMine) std::filesystem::remove_all(m_path, ignored);
}

std::string RandomText(std::mt19937& random, const std::string& alphabet, std::size_t longest) {
    std::string text(random() % (longest + 1), ' ');
    for (char& c : text)
        c = alphabet[random() % alphabet.size()];
    return text;
}

std::string ReadFile(const std::string& path) {
    std::string content = "absent";
    os::ReadWholeFile(path.c_str(), content);
    return content;
}

std::string ReadTextFile(const std::string& path) {
    std::string content = ReadFile(path);
    if (kIsWindows) std::erase(content, '\r');
    return content;
}

std::string Repeat(std::string_view text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

std::string Numbered(std::string_view before, std::string_view behind, int count) {
    std::string all;
    for (int i = 0; i < count; ++i)
        all.append(before).append(std::to_string(i)).append(behind);
    return all;
}

void OnStackOf(std::size_t megabytes, const std::function<void()>& work) {
    const auto run = [](void* argument) { (*static_cast<const std::function<void()>*>(argument))(); };
    std::function<void()> argument = work;
    ASSERT_TRUE(os::RunOnStack(megabytes << 20, run, &argument));
}

}  // namespace brenta::test
