// What tests of settings share: an application-data folder and a registry of their own, and what the system
// is asked about them.
#pragma once

#include <filesystem>

#include "brenta/host.h"
#include "child_process.h"
#include "platform/own_registry.h"
#include "test_support.h"

namespace brenta::test {

/// While it lives, application data belong into an empty folder of the program, which is "tool".
class DataFolder {
 public:
    explicit DataFolder(const char* executable = "/bin/tool")
        : m_executable(executable), m_path(m_scratch / "data"), m_registry(m_path, true) {
        Serve();
    }
    /// The folder of another process, which has given its Words.
    explicit DataFolder(const Scratch::Known& scratch, const char* executable = "/bin/tool")
        : m_scratch(scratch),
          m_executable(executable),
          m_path(m_scratch / "data"),
          m_registry(m_path, false) {
        Serve();
    }
    ~DataFolder() { SetHostServices({}); }

    /// From now on the folder is unknown.
    void Forget() { m_path.clear(); }
    std::string operator/(const char* name) const { return m_path + "/" + name; }
    const std::string& ScratchPath() const { return m_scratch.Path(); }

    /// Takes the right to write a file from this process, which goes on as a user who has no more rights than
    /// that. For child processes.
    bool MakeReadOnly(const char* file) const;

 private:
    void Serve() {
        HostServices services;
        services.context = this;
        services.executablePath = [](void* self, CoreString& path) {
            return !(path = static_cast<DataFolder*>(self)->m_executable).IsEmpty();
        };
        services.applicationDataFolder = [](void* self, CoreString& path) {
            return !(path = static_cast<DataFolder*>(self)->m_path.c_str()).IsEmpty();
        };
        SetHostServices(services);
    }

    const Scratch m_scratch;
    const char* m_executable;
    std::string m_path;
    const OwnRegistry m_registry;
};

/// Whether the user alone has rights to a file or folder; where rights are the folder's, whether it is there.
bool IsForUserAlone(const std::string& path);

}  // namespace brenta::test
