// Keeps settings from one run to the next: simple values in the program's own file, trees of values in the
// registry.
#include <brenta/host.h>
#include <brenta/registry.h>
#include <brenta/settings.h>

#include <cstdio>
#include <filesystem>

namespace fs = std::filesystem;

// A program that says nothing about it has its data in the user's folder for them. This one keeps them beside
// itself, so that trying it leaves nothing behind: a host replaces what the library asks of its surroundings.
void UseFolder(const char* folder) {
    static brenta::CoreString path;
    path = fs::absolute(folder).string().c_str();
    brenta::HostServices services;
    services.applicationDataFolder = [](void*, brenta::CoreString& result) {
        result = path;
        return true;
    };
    brenta::SetHostServices(services);
}

void KeepSimpleValues() {
    int step = 0;
    if (!brenta::GetAppValue("Grid", "Step", step)) std::printf("no grid step yet\n");
    brenta::SetAppValue("Grid", "Step", 25);
    brenta::SetAppValue("Grid", "Unit", "mil");

    brenta::CoreString unit;
    brenta::GetAppValue("Grid", "Step", step);
    brenta::GetAppValue("Grid", "Unit", unit);
    std::printf("grid step: %d %s\n", step, unit());
}

// Values have types here, and keys stand within keys.
void KeepTree() {
    brenta::CCoreRegistry registry(brenta::HKEY_CURRENT_USER);
    if (!registry.SetKey("Software\\Demo\\Windows\\Main", true)) return;
    registry.WriteInt("Width", 1280);
    registry.WriteBool("Maximised", true);
    registry.WriteFloat("Zoom", 1.5);
    std::printf("main window: width %d, zoom %g%s, height %d\n", registry.ReadInt("Width", 0),
                registry.ReadFloat("Zoom", 1), registry.ReadBool("Maximised", false) ? ", maximised" : "",
                registry.ReadInt("Height", 800));  // what was never written is the default given
    registry.SetKey("Software", false);
    registry.DeleteKey("Software\\Demo");
}

int main() {
    fs::create_directory("settings_data");
    UseFolder("settings_data");
    KeepSimpleValues();
    KeepTree();
    fs::remove_all("settings_data");
    return 0;
}
