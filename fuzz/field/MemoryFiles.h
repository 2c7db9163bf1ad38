// SPDX-License-Identifier: MIT
//
// Files of SQLite in memory in place of those on the disk: opening a job then costs no system call, and the
// locks that a damaged file asks for make nobody wait.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <sqlite3.h>
#include <string>

namespace fuzz {

/// What SQLite works on from now on. One file, whatever it is called; the journals beside it are
/// lost when they are closed. One thread.
class MemoryFiles
{
public:
    static std::string& Content()
    {
        static std::string content;
        return content;
    }

    /// Before anything else of SQLite.
    static void Use()
    {
        static sqlite3_vfs files = Made();
        alignas(std::max_align_t) static std::array<char, std::size_t{kPage} * kPages> pages;
        sqlite3_config(SQLITE_CONFIG_SINGLETHREAD);
        sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
        sqlite3_config(SQLITE_CONFIG_PAGECACHE, pages.data(), kPage, kPages);
        sqlite3_vfs_register(&files, 1);
    }

private:
    struct File
    {
        sqlite3_file base;
        std::string* content;
        bool isJournal;
    };

    static std::string& ContentOf(sqlite3_file* file)
    {
        return *reinterpret_cast<File*>(file)->content;
    }

    static int Open(sqlite3_vfs*, sqlite3_filename, sqlite3_file* opened, int flags, int* given)
    {
        auto* const file = reinterpret_cast<File*>(opened);
        file->isJournal = (flags & SQLITE_OPEN_MAIN_DB) == 0;
        file->content = file->isJournal ? new std::string : &Content();
        file->base.pMethods = &Methods();
        if (given != nullptr) *given = flags;
        return SQLITE_OK;
    }

    static int Close(sqlite3_file* file)
    {
        if (reinterpret_cast<File*>(file)->isJournal) delete &ContentOf(file);
        return SQLITE_OK;
    }

    static int Read(sqlite3_file* file, void* bytes, int size, sqlite3_int64 at)
    {
        const std::string& content = ContentOf(file);
        const auto wanted = static_cast<std::size_t>(size);
        const std::size_t begin = std::min(content.size(), static_cast<std::size_t>(at));
        const std::size_t count = std::min(content.size() - begin, wanted);
        std::memcpy(bytes, content.data() + begin, count);
        std::memset(static_cast<char*>(bytes) + count, 0, wanted - count);
        return count == wanted ? SQLITE_OK : SQLITE_IOERR_SHORT_READ;
    }

    static int Write(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 at)
    {
        std::string& content = ContentOf(file);
        const std::size_t end = static_cast<std::size_t>(at) + static_cast<std::size_t>(size);
        if (end > kMost) return SQLITE_FULL;
        if (content.size() < end) content.resize(end);
        std::memcpy(&content[static_cast<std::size_t>(at)], bytes, static_cast<std::size_t>(size));
        return SQLITE_OK;
    }

    static int Truncate(sqlite3_file* file, sqlite3_int64 size)
    {
        std::string& content = ContentOf(file);
        content.resize(std::min(content.size(), static_cast<std::size_t>(size)));
        return SQLITE_OK;
    }

    static int FileSize(sqlite3_file* file, sqlite3_int64* size)
    {
        *size = static_cast<sqlite3_int64>(ContentOf(file).size());
        return SQLITE_OK;
    }

    static int IsReserved(sqlite3_file*, int* answer)
    {
        *answer = 0;
        return SQLITE_OK;
    }

    // Version 1: without shared memory, so that a file in write-ahead mode is refused.
    static const sqlite3_io_methods& Methods()
    {
        static const sqlite3_io_methods methods = [] {
            sqlite3_io_methods made = {};
            made.iVersion = 1;
            made.xClose = Close;
            made.xRead = Read;
            made.xWrite = Write;
            made.xTruncate = Truncate;
            made.xSync = [](sqlite3_file*, int) { return SQLITE_OK; };
            made.xFileSize = FileSize;
            made.xLock = [](sqlite3_file*, int) { return SQLITE_OK; };
            made.xUnlock = [](sqlite3_file*, int) { return SQLITE_OK; };
            made.xCheckReservedLock = IsReserved;
            made.xFileControl = [](sqlite3_file*, int, void*) { return SQLITE_NOTFOUND; };
            made.xSectorSize = [](sqlite3_file*) { return 4096; };
            made.xDeviceCharacteristics = [](sqlite3_file*) { return 0; };
            return made;
        }();
        return methods;
    }

    static int Access(sqlite3_vfs*, const char*, int, int* answer)
    {
        *answer = 0; // asked of journals only
        return SQLITE_OK;
    }

    static int FullName(sqlite3_vfs*, const char* name, int size, char* full)
    {
        sqlite3_snprintf(size, full, "%s", name);
        return SQLITE_OK;
    }

    // Every run alike.
    static int Randomness(sqlite3_vfs*, int size, char* bytes)
    {
        std::memset(bytes, 1, static_cast<std::size_t>(size));
        return size;
    }

    static int Now(sqlite3_vfs*, double* days)
    {
        *days = 2461367.0; // 2026-11-22, Julian
        return SQLITE_OK;
    }

    static sqlite3_vfs Made()
    {
        sqlite3_vfs made = {};
        made.iVersion = 1;
        made.szOsFile = sizeof(File);
        made.mxPathname = 512;
        made.zName = "memory files";
        made.xOpen = Open;
        made.xDelete = [](sqlite3_vfs*, const char*, int) { return SQLITE_OK; };
        made.xAccess = Access;
        made.xFullPathname = FullName;
        made.xRandomness = Randomness;
        made.xSleep = [](sqlite3_vfs*, int time) { return time; };
        made.xCurrentTime = Now;
        made.xGetLastError = [](sqlite3_vfs*, int, char*) { return 0; };
        return made;
    }

    static constexpr int kPage = 4096 + 512; // bytes, with what SQLite keeps beside a page
    static constexpr int kPages = 64;
    static constexpr std::size_t kMost = 4U << 20U; // bytes of a file
};

} // namespace fuzz
