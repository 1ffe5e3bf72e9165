#include "test_support.h"

#include <pthread.h>

#include <cstdlib>
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

std::string ReadFile(const std::string& path) {
    std::string content = "absent";
    os::ReadWholeFile(path.c_str(), content);
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
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, megabytes << 20);
    const auto run = [](void* argument) -> void* {
        (*static_cast<const std::function<void()>*>(argument))();
        return nullptr;
    };
    std::function<void()> argument = work;
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &argument), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

}  // namespace brenta::test
