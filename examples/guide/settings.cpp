// Settings in the initialisation file and in the registry, kept in a folder of this program's own.
#include <brenta/host.h>
#include <brenta/registry.h>
#include <brenta/settings.h>

#include <cstdio>
#include <filesystem>

namespace {

std::filesystem::path Folder() {
    return std::filesystem::current_path() / "guide_data";
}

bool DataFolder(void*, brenta::CoreString& folder) {
    folder = Folder().string().c_str();
    return true;
}

// A few values of this program, in a file that a person may edit.
void KeepGrid() {
    int step = 0;
    if (!brenta::GetAppValue("Grid", "Step", step)) step = 250000;
    brenta::SetAppValue("Grid", "Step", step + 10000);
    brenta::GetAppValue("Grid", "Step", step);
    std::printf("grid: %d\n", step);
}

// Values that other programs want, too, in a tree of keys.
void KeepUser() {
    brenta::CCoreRegistry registry(brenta::HKEY_CURRENT_USER);
    if (!registry.SetKey("Software\\Guide\\Team", true)) return;
    registry.WriteString("Name", "layout");
    registry.WriteInt("Members", 4);
    std::printf("team: %s, %d\n", registry.ReadString("Name", "nobody")(), registry.ReadInt("Members", 0));
    std::printf("leader: %s\n", registry.ReadString("Leader", "nobody")());
    registry.DeleteKey("Software\\Guide");
}

}  // namespace

int main() {
    brenta::HostServices services;
    services.applicationDataFolder = &DataFolder;
    brenta::SetHostServices(services);
    KeepGrid();
    KeepUser();
    std::filesystem::remove_all(Folder());
    return 0;
}
