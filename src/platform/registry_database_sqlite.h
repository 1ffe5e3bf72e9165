// The registry's database file and one operation on it at a time.
#pragma once

#include <sqlite3.h>

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/registry_path.h"

namespace brenta::registry_store {

/// The statements that are prepared once and kept.
enum class Sql {
    Begin,
    BeginWriting,
    Commit,
    Rollback,
    FindKey,
    AddKey,
    DeleteKey,
    CountValues,
    CountSubKeys,
    ListValues,
    ListSubKeys,
    ReadValue,
    WriteValue,
    DeleteValue,
    CopyValues,
    Count_,
};

RegistryError ErrorOfResult(int result);

struct CloseDatabase {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
};

/// An open database with the registry's tables.
class Database {
 public:
    ~Database();
    Database() = default;
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    /// Once per object. The file must be there; it is given tables if it is empty, and refused if it is
    /// anything else than a registry. An empty path opens an empty registry in memory.
    RegistryError Open(const std::string& path);

    /// Prepared when it is first asked for; null if that fails.
    sqlite3_stmt* Statement(Sql sql);
    /// The error of the last failure.
    RegistryError Error() const { return ErrorOfResult(sqlite3_errcode(m_database.get())); }

 private:
    RegistryError Prepare(const std::string& path);
    RegistryError CheckOwner(bool& isNew);
    RegistryError CreateTables();
    RegistryError UseWriteAheadLog();
    void ForgetFormerRun();
    int Execute(const char* sql);
    bool ReadNumber(const char* sql, std::int64_t& number);

    std::unique_ptr<sqlite3, CloseDatabase> m_database;
    std::array<sqlite3_stmt*, static_cast<std::size_t>(Sql::Count_)> m_statements{};
};

/// A run of a kept statement; parameters are numbered from 1, columns from 0. The texts must outlive it.
class Query {
 public:
    Query(Database& database, Sql sql) : m_pStatement(database.Statement(sql)) {}
    ~Query();
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    Query& With(int index, std::int64_t number);
    Query& With(int index, std::string_view text);
    Query& WithBytes(int index, std::string_view bytes);

    /// Whether there is another row; at the end, and after a failure, there is none.
    bool Next();
    /// Runs to the end. None, or why that failed, or why Next() did.
    RegistryError Finish();

    std::int64_t Number(int column) const { return sqlite3_column_int64(m_pStatement, column); }
    /// Valid until the next step.
    std::string_view Bytes(int column) const;

 private:
    sqlite3_stmt* m_pStatement;
    int m_result = SQLITE_ROW;
};

/// What an operation does to the file.
enum class Purpose {
    Read,
    Change,  ///< something that is there; without a file there is nothing
    Create,
};

/// One operation: the only one of this process, in a transaction that is taken back unless Finish keeps it.
class Session {
 public:
    explicit Session(Purpose purpose);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Without None there is no database.
    RegistryError Error() const { return m_error; }
    Database& Get() { return *m_pDatabase; }

    /// Keeps what was done if `result` is None. Returns `result`, or why it could not be kept.
    RegistryError Finish(RegistryError result);

 private:
    std::unique_lock<std::mutex> m_lock;
    Database* m_pDatabase = nullptr;
    RegistryError m_error;
    bool m_inTransaction = false;
};

}  // namespace brenta::registry_store
