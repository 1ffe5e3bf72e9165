#include "platform/registry_database_sqlite.h"

#include <chrono>
#include <new>
#include <thread>
#include <utility>

#include "brenta/files.h"
#include "foundation/string_blocks.h"
#include "os/data_files.h"
#include "os/os.h"
#include "platform/application_places.h"

namespace brenta::registry_store {

namespace {

constexpr int kBusyMilliseconds = 5000;

// Keys form a tree; the three roots are rows of their own. Names compare by their folded form, values hang on
// their key, and what hangs on a deleted key goes with it. The row of a key that does not outlive the
// system's run names that run.
//
// The number marks the file as a registry among all databases.
constexpr std::int64_t kApplicationId = 0x42525247;  // "BRRG"
constexpr std::int64_t kVersion = 1;
constexpr const char* kTables =
    "CREATE TABLE keys(id INTEGER PRIMARY KEY, parent INTEGER REFERENCES keys(id) ON DELETE CASCADE,"
    " name TEXT NOT NULL, folded TEXT NOT NULL, volatile_boot TEXT, UNIQUE(parent, folded));"
    "CREATE TABLE vals(key INTEGER NOT NULL REFERENCES keys(id) ON DELETE CASCADE,"
    " name TEXT NOT NULL, folded TEXT NOT NULL, type INTEGER NOT NULL, data BLOB NOT NULL,"
    " UNIQUE(key, folded));"
    "CREATE INDEX volatile_keys ON keys(volatile_boot) WHERE volatile_boot IS NOT NULL;"
    "INSERT INTO keys(id, parent, name, folded) VALUES"
    " (1, NULL, 'HKEY_CURRENT_USER', 'hkey_current_user'),"
    " (2, NULL, 'HKEY_LOCAL_MACHINE', 'hkey_local_machine'),"
    " (3, NULL, 'HKEY_USERS', 'hkey_users'),"
    " (4, 2, 'Software', 'software'),"
    " (5, 4, 'Classes', 'classes');"
    "PRAGMA application_id = 0x42525247;"
    "PRAGMA user_version = 1;";

constexpr const char* kStatements[] = {
    "BEGIN",
    "BEGIN IMMEDIATE",
    "COMMIT",
    "ROLLBACK",
    "SELECT id, volatile_boot IS NOT NULL FROM keys WHERE parent = ?1 AND folded = ?2",
    "INSERT INTO keys(parent, name, folded, volatile_boot)"
    " SELECT id, ?2, ?3, ifnull(volatile_boot, ?4) FROM keys WHERE id = ?1",
    "DELETE FROM keys WHERE id = ?1",
    "SELECT count(*) FROM vals WHERE key = ?1",
    "SELECT count(*) FROM keys WHERE parent = ?1",
    "SELECT name FROM vals WHERE key = ?1 ORDER BY folded",
    "SELECT name, id FROM keys WHERE parent = ?1 ORDER BY folded",
    "SELECT type, length(data), CASE WHEN ?3 > 0 THEN substr(data, 1, ?3) END,"
    " substr(data, -1) FROM vals WHERE key = ?1 AND folded = ?2",
    "INSERT INTO vals(key, name, folded, type, data) VALUES(?1, ?2, ?3, ?4, ?5)"
    " ON CONFLICT(key, folded) DO UPDATE SET type = excluded.type, data = excluded.data",
    "DELETE FROM vals WHERE key = ?1 AND folded = ?2",
    "INSERT INTO vals(key, name, folded, type, data)"
    " SELECT ?2, name, folded, type, data FROM vals WHERE key = ?1"
    " ON CONFLICT(key, folded) DO UPDATE SET type = excluded.type, data = excluded.data",
};
static_assert(std::size(kStatements) == static_cast<std::size_t>(Sql::Count_));

/// What is kept open between operations.
struct Kept {
    std::unique_ptr<Database> database;
    std::string path;     // "" for the registry in memory
    os::FileStamp stamp;  // of the file that was opened
    std::uint64_t process = 0;
};

constinit std::mutex g_mutex;
constinit Kept* g_pKept = nullptr;

/// Closes at the end, so that the log is brought into the file; not in the midst of another thread's work.
struct Closer {
    ~Closer() {
        const std::unique_lock<std::mutex> lock(g_mutex, std::try_to_lock);
        if (!lock.owns_lock() || !g_pKept || g_pKept->process != os::ProcessId()) return;
        delete std::exchange(g_pKept, nullptr);
    }
};
const Closer g_closer;

/// The file below this folder, with "/" or "\" as they come.
std::string FileOf(const CoreString& folder) {
    return folder.IsEmpty() ? std::string()
                            : std::string(CoreNativePath(folder)) + "/Orvane Works/registry.db";
}

RegistryError CreateFile(const std::string& path) {
    if (path.empty()) return RegistryError::NoFolder;
    const std::string folder = path.substr(0, path.rfind('/'));
    const bool created = os::CreatePrivateFolder(folder.c_str()) && os::CreatePrivateFile(path.c_str());
    return created ? RegistryError::None : RegistryError::AccessDenied;
}

/// A connection that came from the parent process is neither usable nor to be closed: it holds what the
/// parent has of the file. It is left where it is.
void LeaveToParent() {
    static Kept* left = nullptr;
    left = std::exchange(g_pKept, nullptr);
    static_cast<void>(left);
}

/// The database for this file: the open one, unless another file stands in its place or another process has
/// opened it. A file that is not there reads as an empty registry, in which nothing is to be changed.
RegistryError Connect(std::string path, Purpose purpose, Database*& database) {
    const std::uint64_t process = os::ProcessId();
    if (g_pKept && g_pKept->process != process) LeaveToParent();
    os::FileStamp stamp;
    bool isThere = !path.empty() && os::StampOfFile(path.c_str(), stamp);
    if (!isThere && purpose == Purpose::Create) {
        const RegistryError error = CreateFile(path);
        if (error != RegistryError::None) return error;
        isThere = os::StampOfFile(path.c_str(), stamp);
    }
    if (!isThere && purpose == Purpose::Change) return RegistryError::NotFound;
    if (!isThere) path.clear();
    if (!g_pKept || g_pKept->path != path || !g_pKept->stamp.IsSameFile(stamp)) {
        delete std::exchange(g_pKept, nullptr);
        auto kept = std::make_unique<Kept>();
        kept->database = std::make_unique<Database>();
        const RegistryError error = kept->database->Open(path);
        if (error != RegistryError::None) return error;
        kept->path = std::move(path);
        kept->stamp = stamp;
        kept->process = process;
        g_pKept = kept.release();
    }
    database = g_pKept->database.get();
    return RegistryError::None;
}

}  // namespace

RegistryError ErrorOfResult(int result) {
    switch (result & 0xff) {
        case SQLITE_OK:
        case SQLITE_ROW:
        case SQLITE_DONE:
            return RegistryError::None;
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
        case SQLITE_READONLY:
        case SQLITE_PERM:
        case SQLITE_AUTH:
        case SQLITE_CANTOPEN:
            return RegistryError::AccessDenied;
        case SQLITE_NOMEM:
        case SQLITE_TOOBIG:
            return RegistryError::OutOfMemory;
        case SQLITE_FULL:
            return RegistryError::DiskFull;
        case SQLITE_IOERR:
            return RegistryError::IoFailed;
        default:
            return RegistryError::BadDatabase;
    }
}

// ---------------------------------------------------------------------------------------------------------
// Database

Database::~Database() {
    for (sqlite3_stmt* statement : m_statements)
        sqlite3_finalize(statement);
}

int Database::Execute(const char* sql) {
    return sqlite3_exec(m_database.get(), sql, nullptr, nullptr, nullptr);
}

bool Database::ReadNumber(const char* sql, std::int64_t& number) {
    sqlite3_stmt* statement = nullptr;
    const bool found = sqlite3_prepare_v2(m_database.get(), sql, -1, &statement, nullptr) == SQLITE_OK &&
                       sqlite3_step(statement) == SQLITE_ROW;
    if (found) number = sqlite3_column_int64(statement, 0);
    sqlite3_finalize(statement);
    return found;
}

RegistryError Database::Open(const std::string& path) {
    sqlite3* database = nullptr;
    const char* const name = path.empty() ? ":memory:" : path.c_str();
    const int result = sqlite3_open_v2(name, &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    m_database.reset(database);
    if (!database) return RegistryError::OutOfMemory;
    return result == SQLITE_OK ? Prepare(path) : ErrorOfResult(result);
}

// Nothing is written to the file before it is known to be a registry, or empty.
RegistryError Database::Prepare(const std::string& path) {
    sqlite3_busy_timeout(m_database.get(), kBusyMilliseconds);
    const int result =
        Execute("PRAGMA foreign_keys = ON; PRAGMA trusted_schema = OFF; PRAGMA synchronous = NORMAL;");
    if (result != SQLITE_OK) return ErrorOfResult(result);
    bool isNew = false;
    RegistryError error = CheckOwner(isNew);
    if (error == RegistryError::None && !path.empty()) error = UseWriteAheadLog();
    if (error == RegistryError::None && isNew) error = CreateTables();
    if (error == RegistryError::None) ForgetFormerRun();
    return error;
}

RegistryError Database::CheckOwner(bool& isNew) {
    std::int64_t owner = 0, version = 0, objects = 0;
    if (!ReadNumber("PRAGMA application_id", owner) || !ReadNumber("PRAGMA user_version", version) ||
        !ReadNumber("SELECT count(*) FROM sqlite_schema", objects))
        return Error() == RegistryError::None ? RegistryError::BadDatabase : Error();
    isNew = owner == 0 && objects == 0;
    return isNew || (owner == kApplicationId && version == kVersion) ? RegistryError::None
                                                                     : RegistryError::BadDatabase;
}

// A process that changes the mode of a new file finds the others in the way that do the same, and is then not
// made to wait as elsewhere.
RegistryError Database::UseWriteAheadLog() {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(kBusyMilliseconds);
    for (;;) {
        const int result = Execute("PRAGMA journal_mode = WAL");
        if ((result & 0xff) != SQLITE_BUSY || Clock::now() >= end) {
            // A file that cannot be written may still be read.
            return (result & 0xff) == SQLITE_READONLY ? RegistryError::None : ErrorOfResult(result);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

/// Another process may have been faster.
RegistryError Database::CreateTables() {
    int result = Execute("BEGIN IMMEDIATE");
    if (result != SQLITE_OK) return ErrorOfResult(result);
    bool isNew = false;
    const RegistryError error = CheckOwner(isNew);
    if (error == RegistryError::None && isNew) result = Execute(kTables);
    if (error == RegistryError::None && result == SQLITE_OK) result = Execute("COMMIT");
    if (error == RegistryError::None && result == SQLITE_OK) return error;
    Execute("ROLLBACK");
    return error == RegistryError::None ? ErrorOfResult(result) : error;
}

/// Deletes the keys of former runs of the system. Where that fails, the next process will do it.
void Database::ForgetFormerRun() {
    const std::string run = os::BootId();
    if (run.empty()) return;  // unknown: those of this run cannot be told from the others
    const std::string former = "FROM keys WHERE volatile_boot IS NOT NULL AND volatile_boot <> '" + run + "'";
    std::int64_t found = 0;
    if (ReadNumber(("SELECT 1 " + former + " LIMIT 1").c_str(), found)) Execute(("DELETE " + former).c_str());
}

sqlite3_stmt* Database::Statement(Sql sql) {
    const auto index = static_cast<std::size_t>(sql);
    sqlite3_stmt*& statement = m_statements[index];
    if (!statement) {
        sqlite3_prepare_v3(m_database.get(), kStatements[index], -1, SQLITE_PREPARE_PERSISTENT, &statement,
                           nullptr);
    }
    return statement;
}

// ---------------------------------------------------------------------------------------------------------
// Query

Query::~Query() {
    if (!m_pStatement) return;
    sqlite3_reset(m_pStatement);
    sqlite3_clear_bindings(m_pStatement);
}

Query& Query::With(int index, std::int64_t number) {
    sqlite3_bind_int64(m_pStatement, index, number);
    return *this;
}

Query& Query::With(int index, std::string_view text) {
    const char* const bytes = text.data() ? text.data() : "";
    if (sqlite3_bind_text64(m_pStatement, index, bytes, text.size(), SQLITE_STATIC, SQLITE_UTF8) != SQLITE_OK)
        m_result = SQLITE_TOOBIG;
    return *this;
}

Query& Query::WithBytes(int index, std::string_view bytes) {
    const char* const start = bytes.data() ? bytes.data() : "";
    if (sqlite3_bind_blob64(m_pStatement, index, start, bytes.size(), SQLITE_STATIC) != SQLITE_OK)
        m_result = SQLITE_TOOBIG;
    return *this;
}

bool Query::Next() {
    if (!m_pStatement) m_result = SQLITE_ERROR;
    if (m_result == SQLITE_ROW) m_result = sqlite3_step(m_pStatement);
    return m_result == SQLITE_ROW;
}

RegistryError Query::Finish() {
    while (Next()) {
    }
    return ErrorOfResult(m_result);
}

std::string_view Query::Bytes(int column) const {
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(m_pStatement, column));
    const int size = sqlite3_column_bytes(m_pStatement, column);
    return bytes ? std::string_view(bytes, static_cast<std::size_t>(size)) : std::string_view();
}

// ---------------------------------------------------------------------------------------------------------
// Session

// The host is asked for the folder before the lock is taken.
Session::Session(Purpose purpose) : m_error(RegistryError::None) {
    t_stringsLacked = false;
    std::string path = FileOf(ApplicationDataRoot());
    const bool isWhole = !t_stringsLacked;
    m_lock = std::unique_lock<std::mutex>(g_mutex);
    m_error = isWhole ? Connect(std::move(path), purpose, m_pDatabase) : RegistryError::OutOfMemory;
    if (m_error != RegistryError::None) return;
    m_error = Query(*m_pDatabase, purpose == Purpose::Read ? Sql::Begin : Sql::BeginWriting).Finish();
    m_inTransaction = m_error == RegistryError::None;
}

Session::~Session() {
    if (m_inTransaction) Query(*m_pDatabase, Sql::Rollback).Finish();
}

RegistryError Session::Finish(RegistryError result) {
    if (result == RegistryError::None) result = Query(*m_pDatabase, Sql::Commit).Finish();
    if (result == RegistryError::None) m_inTransaction = false;
    return result;
}

}  // namespace brenta::registry_store
