// What a person would miss if it went wrong: the operations that read or change files, and the evaluation of
// texts, each in a form that a test can disturb and then look at what is left.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/data_folder.h"
#include "platform/loopback_server.h"
#include "reliability/faults.h"
#include "script/script_test_support.h"

namespace brenta::test {

struct Operation {
    enum Promise {
        AllOrNothing,   ///< true: the new state; false: the old one
        PartWhenFalse,  ///< true: the new state
        Untold,         ///< the old state or the new one; the result says nothing
    };
    const char* name;
    Promise promise;
    std::function<void()> reset;         ///< makes the old state
    std::function<bool()> run;           ///< leads from it to the new one
    std::function<std::string()> state;  ///< never the same for both
    Fault::Of threads = Fault::OneThread;
};

class Operations {
 public:
    Operations();
    /// Those of another process, which has given its Words.
    explicit Operations(const Texts& words);
    ~Operations();
    Operations(const Operations&) = delete;
    Operations& operator=(const Operations&) = delete;

    /// Where the operations work, for a child process.
    Texts Words() const { return {m_data.ScratchPath(), m_folder.Path(), m_server.Address()}; }

    /// Those that leave a file behind.
    std::vector<Operation> changes;
    /// Those that only give a result.
    std::vector<Operation> reads;

 private:
    std::string FileWith(const char* name, const std::string& content) const;
    void AddChange(const char* name, Operation::Promise promise, const std::string& path,
                   std::function<bool()> run);
    void AddRead(const char* name, Operation::Promise promise, std::function<bool(std::string&)> run);
    void Serve();
    void AddChanges();
    void AddReaders();
    void AddScripts();

    static constexpr char kProgram[] = "/opt/bin/a program whose name needs a block";

    const bool m_isFirst;  // who makes the files
    const DataFolder m_data;
    const Scratch m_folder;
    LoopbackServer m_server;
    const std::string m_address;
};

}  // namespace brenta::test
