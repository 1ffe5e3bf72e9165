// The host's door: message boxes, the data folder and the clock in the host's own hands, as a test or a
// desktop program wants them.
#include <brenta/framework.h>
#include <brenta/host.h>
#include <brenta/script.h>
#include <brenta/settings.h>

#include <cstdio>
#include <string>

namespace {

// What the services need to know; every service gets its address.
struct Desktop {
    std::string folder;
    int questions = 0;
};

int ShowMessage(void* context, const char* text, unsigned int type) {
    const bool question = (type & brenta::MB_TYPEMASK) == brenta::MB_YESNO;
    if (question) ++static_cast<Desktop*>(context)->questions;
    std::printf("[%s] %s\n", question ? "Yes/No" : "OK", text);
    return question ? brenta::IDYES : brenta::IDOK;
}

bool DataFolder(void* context, brenta::CoreString& folder) {
    folder = static_cast<Desktop*>(context)->folder.c_str();
    return true;
}

long long Midnight(void*) {
    return 946684800;  // 1 January 2000
}

}  // namespace

int main() {
    Desktop desktop{"/srv/brenta"};
    brenta::HostServices services;
    services.context = &desktop;
    services.showMessage = &ShowMessage;
    services.applicationDataFolder = &DataFolder;
    services.currentTime = &Midnight;
    brenta::SetHostServices(services);

    brenta::CCoreScriptEngine engine({}, nullptr);
    brenta::Var answer;
    engine.Execute("Env.StdLib.Prompt(\"3 parts placed\"); Env.StdLib.PromptYesNo(\"Save?\")", answer,
                   brenta::kUnitsNone);
    std::printf("save: %s, questions: %d\n", answer.GetBool() ? "yes" : "no", desktop.questions);
    std::printf("settings are kept in %s\n", brenta::GetAppDataFolder()());
    brenta::SetHostServices({});  // the desktop is about to go
    return 0;
}
