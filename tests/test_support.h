// Helpers shared by the unit tests.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "brenta/failure.h"

namespace brenta::test {

using Texts = std::vector<std::string>;

/// For what the platforms themselves do otherwise.
extern const bool kIsWindows;

/// Records every forced crash while it lives and resumes after each, so that a test can check both the record
/// and the state that the failing operation leaves behind.
class CrashRecorder {
 public:
    CrashRecorder();
    ~CrashRecorder();
    CrashRecorder(const CrashRecorder&) = delete;
    CrashRecorder& operator=(const CrashRecorder&) = delete;

    /// The messages so far, oldest first.
    const Texts& Messages() const { return m_messages; }
    /// The last record; only valid after at least one crash.
    const ForcedCrashRecord& Last() const { return m_last; }

 private:
    static void Record(const ForcedCrashRecord& record, void* context);

    Texts m_messages;
    ForcedCrashRecord m_last{};
};

/// A host, while it lives, that keeps what it is to show and answers it; its one resource, number 7, is
/// "resource".
class RecordingHost {
 public:
    RecordingHost();
    ~RecordingHost();
    RecordingHost(const RecordingHost&) = delete;
    RecordingHost& operator=(const RecordingHost&) = delete;

    /// The messages so far as "text|type", oldest first.
    Texts shown;
    /// What it was to open.
    Texts opened;
    int answer = 42;
};

/// A new folder that goes, with all that is in it, when the object does.
class Scratch {
 public:
    /// The path of another process's folder, which belongs to that.
    struct Known {
        std::string path;
    };

    Scratch();
    explicit Scratch(const Known& known) : m_path(known.path), m_isMine(false) {}
    ~Scratch();
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    /// The path of an entry in the folder.
    std::string operator/(const char* name) const { return m_path + "/" + name; }
    const std::string& Path() const { return m_path; }

 private:
    std::string m_path;
    bool m_isMine = true;
};

/// A text of at most `longest` characters, each any of the alphabet's.
std::string RandomText(std::mt19937& random, const std::string& alphabet, std::size_t longest);

/// The content of a file; "absent" for one that cannot be read.
std::string ReadFile(const std::string& path);

/// The same with line feeds for the platform's line ends.
std::string ReadTextFile(const std::string& path);

/// `count` times a text.
std::string Repeat(std::string_view text, int count);

/// The numbers from 0 to count - 1, each between two texts.
std::string Numbered(std::string_view before, std::string_view behind, int count);

/// Sets a variable of the environment, or removes it where the value is null.
void SetVariable(const char* name, const char* value);

/// Runs a line for the shell in a folder; false if it fails or there is no such shell, as in a Windows that
/// is none of Wine's.
bool Shell(const std::string& folder, const std::string& line);

/// A shared library that is loaded as long as the object lives.
class LoadedLibrary {
 public:
    explicit LoadedLibrary(const char* path);
    ~LoadedLibrary();
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    bool IsLoaded() const { return m_handle != nullptr; }
    /// A function of it that has the type of the given one; null if it exports no such function.
    template <class Function>
    Function* Find(const char* name, Function*) const {
        return reinterpret_cast<Function*>(Address(name));
    }
    /// Whether anything in this process has the library loaded.
    static bool IsPresent(const char* path);

 private:
    void* Address(const char* name) const;

    void* m_handle;
};

/// Runs work on a thread with a stack of that many megabytes and waits for it.
void OnStackOf(std::size_t megabytes, const std::function<void()>& work);

/// Runs work(0) to work(count - 1), each on a thread of its own, and waits for all.
template <class Count, class Work>
void OnThreads(Count count, const Work& work) {
    std::vector<std::thread> threads;
    for (Count i = 0; i < count; ++i)
        threads.emplace_back([&work, i] { work(i); });
    for (std::thread& thread : threads)
        thread.join();
}

}  // namespace brenta::test
