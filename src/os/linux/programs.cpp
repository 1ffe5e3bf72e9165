// Linux: starting other programs.
//
// A child that ends stays in the system's tables until its parent asks for its status, and a library must not
// ask in the application's name: waiting for just any child would take the application's own. So the program
// becomes a grandchild. The child between them starts it, ends at once with the outcome as its status, and is
// waited for; the program then belongs to the system's first process, which waits for everybody. Between fork
// and exit the child calls nothing that takes a lock or memory, since another thread may have held either at
// the fork.
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "os/os.h"
#include "os/programs.h"

namespace brenta::os {

const int kErrorNoSuchFile = ENOENT;
const int kErrorBadArgument = EINVAL;
const int kErrorNoMemory = ENOMEM;

namespace {

enum class Console { Shared, None };

/// What the program gets besides its words: default signals, a session of its own where it has no console,
/// and of the open files only the first three.
class Surroundings {
 public:
    explicit Surroundings(Console console) {
        m_good = posix_spawn_file_actions_init(&m_files) == 0 && posix_spawnattr_init(&m_attributes) == 0 &&
                 ChooseFiles(console) && ChooseSignals(console);
    }
    ~Surroundings() {
        posix_spawn_file_actions_destroy(&m_files);
        posix_spawnattr_destroy(&m_attributes);
    }
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;

    bool Good() const { return m_good; }
    const posix_spawn_file_actions_t* Files() const { return &m_files; }
    const posix_spawnattr_t* Attributes() const { return &m_attributes; }

 private:
    bool ChooseFiles(Console console) {
        constexpr int kFirstOther = STDERR_FILENO + 1;
        for (int file = 0; console == Console::None && file < kFirstOther; ++file) {
            if (posix_spawn_file_actions_addopen(&m_files, file, "/dev/null", O_RDWR, 0) != 0) return false;
        }
        return posix_spawn_file_actions_addclosefrom_np(&m_files, kFirstOther) == 0;
    }

    bool ChooseSignals(Console console) {
        sigset_t none, all;
        sigemptyset(&none);
        sigfillset(&all);
        int flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
        if (console == Console::None) flags |= POSIX_SPAWN_SETSID;
        return posix_spawnattr_setsigmask(&m_attributes, &none) == 0 &&
               posix_spawnattr_setsigdefault(&m_attributes, &all) == 0 &&
               posix_spawnattr_setflags(&m_attributes, static_cast<short>(flags)) == 0;
    }

    posix_spawn_file_actions_t m_files{};
    posix_spawnattr_t m_attributes{};
    bool m_good = false;
};

/// The outcome that the child between left, or the error of waiting for it.
int OutcomeOf(pid_t child) {
    int status = 0;
    pid_t waited;
    do
        waited = waitpid(child, &status, 0);
    while (waited < 0 && errno == EINTR);
    // An application that ignores its children's ends leaves nothing to be waited for, and no outcome.
    if (waited < 0) return errno == ECHILD ? 0 : errno;
    return WIFEXITED(status) ? WEXITSTATUS(status) : ECHILD;
}

/// Starts words[0]; 0, or the system's error number.
int Start(const std::vector<std::string>& words, Console console) {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (const std::string& word : words)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const Surroundings surroundings(console);
    if (!surroundings.Good()) return ENOMEM;

    const pid_t child = fork();
    if (child < 0) return errno;
    if (child == 0) {
        pid_t program;
        _exit(posix_spawnp(&program, arguments[0], surroundings.Files(), surroundings.Attributes(),
                           arguments.data(), environ));
    }
    return OutcomeOf(child);
}

/// The target as a word for a program that must not take it for an option; "" if there is no such target.
std::string TargetWord(const char* target) {
    if (KindOfPath(target) == PathKind::Absent) return HasScheme(target) ? target : "";
    std::string path = NativePath(target);
    return path.starts_with('-') ? "./" + path : path;
}

/// One entry of $BROWSER: words separated by blanks, in which "%s" stands for the target; one that does not
/// say where gets the target as its last word.
std::vector<std::string> BrowserWords(std::string_view entry, const std::string& target) {
    std::vector<std::string> words;
    bool placed = false;
    while (!entry.empty()) {
        const std::size_t end = entry.find(' ');
        std::string word(entry.substr(0, end));
        entry.remove_prefix(end == std::string_view::npos ? entry.size() : end + 1);
        if (word.empty()) continue;
        if (const std::size_t mark = word.find("%s"); mark != std::string::npos) {
            word.replace(mark, 2, target);
            placed = true;
        }
        words.push_back(std::move(word));
    }
    if (!words.empty() && !placed) words.push_back(target);
    return words;
}

}  // namespace

bool OpenWithDesktop(const char* target) try {
    const std::string word = TargetWord(target);
    if (word.empty()) return false;
    std::string browsers;
    GetEnvironment("BROWSER", browsers);
    for (std::string_view rest = browsers; !rest.empty();) {
        const std::size_t end = rest.find(':');
        const std::vector<std::string> words = BrowserWords(rest.substr(0, end), word);
        if (!words.empty() && Start(words, Console::None) == 0) return true;
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
    return Start({"xdg-open", word}, Console::None) == 0;
} catch (const std::exception&) {
    return false;
}

bool StartProgram(const char* const* arguments, int count, int& error, const char*) try {
    std::vector<std::string> words{NativePath(arguments[0])};
    for (int i = 1; i < count; ++i)
        words.emplace_back(arguments[i] ? arguments[i] : "");
    error = Start(words, Console::Shared);
    return error == 0;
} catch (const std::exception&) {
    error = ENOMEM;
    return false;
}

}  // namespace brenta::os
