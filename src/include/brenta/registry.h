/// @file
/// The registry: settings of the user and of the machine in a tree of keys, shared by all programs.
///
/// Choose it for settings that several programs share, or that form a tree; for a program's own few settings
/// the initialisation file (GetAppValue and SetAppValue in brenta/settings.h) is simpler, and a person can
/// edit it. On Windows this is the system's registry. Elsewhere it is one database file for each user,
/// "Orvane Works/registry.db" in the application-data folder, which the user alone may read; what is said
/// below holds for both.
///
///     CCoreRegistry registry(HKEY_CURRENT_USER);
///     if (!registry.SetKey("Software\\Orvane Works\\Brenta V4\\Settings", true)) return false;
///     registry.WriteInt("GridStep", 250000);
///     int step = registry.ReadInt("GridStep", 100000);
///     CoreString user = registry.ReadString("UserName", "nobody");
///
/// **Keys.** A key path is relative to one of four roots. Its names are separated by "\"; doubled and
/// trailing separators do not matter, a leading one is an error, and "/" is an ordinary character. The case
/// of A to Z does not matter, and the first spelling stays. A name has at most 255 bytes, a path at most 512
/// names. Null and "" mean the root itself.
///
/// **Values.** A key holds any number of named values; the name null or "" is the key's default value, a
/// value like any other. A name has at most 16383 bytes and compares as those of keys do. Each value has a
/// type and bytes:
///
/// | written by  | type       | bytes                                  |
/// |-------------|------------|----------------------------------------|
/// | WriteDword  | REG_DWORD  | 4                                      |
/// | WriteInt    | REG_BINARY | 4, the lowest first                    |
/// | WriteBool   | REG_BINARY | 1                                      |
/// | WriteFloat  | REG_BINARY | 8, an IEEE double                      |
/// | WriteString | REG_SZ     | length + 1, the terminator among them  |
///
/// Numbers are read back by their bytes, whatever the type: an int that was written reads as a bool by its
/// lowest byte alone, so that ReadBool of 256 is false.
///
/// **Errors** are results: false, -1, 0 or the caller's default. Nothing is shown and nothing thrown. Some
/// operations also record the system's code, see GetLastErrorCode.
///
/// **Threads, processes, cost.** An object is used by one thread at a time; any number of objects may be used
/// at once, by any number of threads and processes. Nothing stays open between calls: an object holds just
/// its paths. Each operation takes place whole or not at all, also if the process is killed in the midst of
/// it. One costs some tens of microseconds in the database, and waits up to 5 seconds for another process.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "brenta/containers.h"
#include "brenta/detail/class_name.h"
#include "brenta/export.h"
#include "brenta/heap.h"
#include "brenta/string.h"

struct HKEY__;  // what the system calls its keys

namespace brenta {

// ---------------------------------------------------------------------------------------------------------
// Roots and types, with the system's numbers on every platform

// On Windows the names below are those of <windows.h>, of the same types, and the two headers may be included
// in any order. Where that one comes first, its macros stand for the numbers.

/// A number of 32 bits without sign.
using DWORD =
    std::conditional_t<sizeof(unsigned long) == sizeof(std::uint32_t), unsigned long, std::uint32_t>;

/// One of the four roots below. It is a mere mark, and nothing can be done with it but to hand it over.
using HKEY = ::HKEY__*;

#ifndef HKEY_CURRENT_USER

// The system's numbers 0x80000000 to 0x80000003, whose sign it extends. Written in full, they need no code to
// run before they can be used.

/// Types and programs of files; the same keys as "Software\Classes" of the local machine.
inline const HKEY HKEY_CLASSES_ROOT = reinterpret_cast<HKEY>(static_cast<std::intptr_t>(-0x80000000LL));
/// The settings of the user.
inline const HKEY HKEY_CURRENT_USER = reinterpret_cast<HKEY>(static_cast<std::intptr_t>(-0x7fffffffLL));
/// The settings of the machine. On Windows ordinary users may not write here, and as every key is opened with
/// all rights, no key exists for them; in the database it is one more root of the user's own.
inline const HKEY HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(static_cast<std::intptr_t>(-0x7ffffffeLL));
/// The settings of all users; in the database one more root of the user's own.
inline const HKEY HKEY_USERS = reinterpret_cast<HKEY>(static_cast<std::intptr_t>(-0x7ffffffdLL));

#endif
#ifndef REG_NONE

inline constexpr DWORD REG_NONE = 0;       ///< no type
inline constexpr DWORD REG_SZ = 1;         ///< a text
inline constexpr DWORD REG_EXPAND_SZ = 2;  ///< a text with names of environment variables
inline constexpr DWORD REG_BINARY = 3;     ///< bytes
inline constexpr DWORD REG_DWORD = 4;      ///< a DWORD

#endif

// ---------------------------------------------------------------------------------------------------------
// CCoreRegistry

/// A root, a current key below it, and what can be done with the values of that key.
///
/// The object cannot be copied: the key that SaveKey makes belongs to this one object.
class BRENTA_API CCoreRegistry {
 public:
    // -----------------------------------------------------------------------------------------------------
    // Life

    /// Starts at the root itself, with the empty path. A root that is none of the four is a forced crash,
    /// site 0x0500E001 of "Registry"; if its handler resumes, the root is HKEY_CURRENT_USER.
    explicit CCoreRegistry(HKEY root);
    /// Deletes the copy that SaveKey made and RestoreKey did not use.
    virtual ~CCoreRegistry();
    CCoreRegistry(const CCoreRegistry&) = delete;
    CCoreRegistry& operator=(const CCoreRegistry&) = delete;

    /// The size of the object in bytes.
    virtual std::size_t SizeOf() const;
    /// "CCoreRegistry"
    virtual const char* GetClassName() const;
    /// "none"
    virtual const char* GetBaseClassName() const;

    BRENTA_HEAP_OPERATORS

    // -----------------------------------------------------------------------------------------------------
    // The current key

    /// Changes the root and keeps the path; false, and no change, for a root that is none of the four.
    bool SetRootKey(HKEY root);

    /// Makes the path below the root the current key. False, and no change, if there is no such key, or, with
    /// `create`, if it can neither be opened nor created with all keys above it. An empty path succeeds and
    /// makes the root itself current. Without `create` the error is recorded.
    bool SetKey(const char* path, bool create);

    /// SetKey(path, true) that opens also the root, when the path is empty.
    bool CreateKey(const char* path);

    /// Back to the root of HKEY_CURRENT_USER. Always true.
    bool ClearKey();

    /// The root and the path that are current; the path is spelled as it was given.
    HKEY GetRootKey() const { return m_root; }
    const CoreString& GetKeyPath() const { return m_path; }

    // -----------------------------------------------------------------------------------------------------
    // Keys. These paths are relative to the root; the current key does not matter.

    /// Whether there is a key `path` below `parent`, one of the four roots, or below the current root if that
    /// is null.
    bool KeyExists(const char* path, HKEY parent = nullptr);

    /// Deletes a key with all that is below it. True also if there is no such key. False for an empty path,
    /// and for keys that a root is made of: "Software\Classes" of the local machine and what is above it.
    bool DeleteKey(const char* path);

    // -----------------------------------------------------------------------------------------------------
    // The contents of the current key

    /// How many values and sub-keys there are; -1 if the key is not there.
    int GetValueCount();
    int GetSubKeyCount();

    /// Replaces `names` by the names of all values or sub-keys, sorted without regard to case; false, and an
    /// empty list, if the key is not there.
    bool GetValueNames(TOrderedList<CoreString>& names);
    bool GetSubKeyNames(TOrderedList<CoreString>& names);

    bool ValueExists(const char* name);

    /// A REG_ number; 0 if there is no such value. Records the error.
    DWORD GetDataType(const char* name);

    /// In bytes, the terminator of a text among them; -1 if there is no such value.
    int GetDataSize(const char* name);

    /// Deletes a value; false if there is none.
    bool DeleteValue(const char* name);

    // -----------------------------------------------------------------------------------------------------
    // Reading values of the current key. The default is the result when there is no such key or value.

    /// The value's first 1, 4, 4 or 8 bytes, whatever its type; bytes that it lacks count as 0. The default
    /// also for a value of no bytes.
    bool ReadBool(const char* name, bool defaultValue);
    int ReadInt(const char* name, int defaultValue);
    DWORD ReadDword(const char* name, DWORD defaultValue);
    double ReadFloat(const char* name, double defaultValue);

    /// A text of at most 999 bytes; the default (null counts as "") for longer ones, whose error is 234, and
    /// for all types but REG_SZ and REG_EXPAND_SZ. Names of environment variables stay as they are. Records
    /// the error; a value of another type is none.
    CoreString ReadString(const char* name, const char* defaultValue);

    // -----------------------------------------------------------------------------------------------------
    // Writing values of the current key. The key is not created: false if it is not there.

    bool WriteBool(const char* name, bool value);
    bool WriteInt(const char* name, int value);
    bool WriteDword(const char* name, DWORD value);
    bool WriteFloat(const char* name, double value);
    /// Null counts as "". Texts of any length are stored, though ReadString reads no more than 999 bytes.
    bool WriteString(const char* name, const char* value);

    // -----------------------------------------------------------------------------------------------------
    // Saving and restoring

    /// Keeps a copy of the current key and of all below it, in a key "Scratch_<number>" of HKEY_CURRENT_USER
    /// that does not outlive the system's run. A copy that this object made before is replaced. False, and
    /// no change, if the current key is a root, is not there, or is the copy itself.
    bool SaveKey();

    /// Writes the copy back to the key that it was made of, below the root that is current now, and deletes
    /// it. Values and keys that were added since SaveKey remain. False, and no change, if nothing is saved
    /// (error 2) or the key is not there any more. Records the error.
    bool RestoreKey();

    // -----------------------------------------------------------------------------------------------------
    // Errors

    /// The code that SetKey without `create`, GetDataType, ReadString and RestoreKey recorded last; 0 if that
    /// one succeeded. 2: there is no such key or value; 3: the application-data folder is unknown; 5: not
    /// permitted, or locked by another program for too long; 6: no such root; 14: out of memory; 87: a name
    /// or path is too long; 112: the disk is full; 161: the path begins with a separator; 234: the text is
    /// too long; 1009: the file is no registry database, and is left as it is; 1016: the disk failed; 1021:
    /// keys that last cannot be created below one that does not outlive the system's run.
    DWORD GetLastErrorCode() const { return m_lastError; }

 private:
    DWORD m_lastError = 0;
    CoreString m_savedPath;
    HKEY m_root;
    CoreString m_path;
};

}  // namespace brenta
