#pragma once
// The installation engine. One object per process: it owns the cabinet, the template
// document, the variable store, the dialogs and the file tables, and lives as long as the
// front end's main. The platform it runs on is reached only through virtual operations,
// which LinuxInstaller (src/linux) fills in.
//
// The class is large by design. Its member definitions are split by concern into files
// under src/installer/<area>/, and the declarations below are grouped by the same areas,
// in the same order. Add members to the section of their area.

#include "foundation/strings/ptr_array.h"
#include "foundation/strings/table.h"
#include "package/cabinet_format.h"

#include <cstdio>

class PConsole;

class Installer {
public:
    Installer();
    virtual ~Installer();
    Installer(const Installer&) = delete;
    Installer& operator=(const Installer&) = delete;

    // ---- Diagnostics (installer.cpp) ------------------------------------------------------
    // Optional log sink, tested for null at each use; not owned.
    PConsole* debugConsole = nullptr;

    // ---- Cabinet and alias access (model/cabinet.cpp) -------------------------------------
    // Loads a cabinet. With bit 0 of `flags` (an uninstaller) `path` is an installation
    // log, opened into logStream: 0, or -1 when it can't be opened. Otherwise the file at
    // `path` is read from `offset` to its end, a solid body is decompressed, and a table
    // of the file records is made (appended to any earlier one). Gives 0, or:
    //   -2 not openable, -3 seek failed, -4 read failed or short,
    //   -5/-6/-7 first/second/third magic word wrong, -8 unknown record tag,
    //   -10 no memory for the cabinet, -11 and -21..-29 from the solid decompressor.
    int Init(const char* path, int offset, unsigned int flags);
    // A copy of record `index`'s content with a NUL behind it, into `out` (previous
    // content released); `size` gets its length, `md5` (when not null) the record's
    // digest. Gives 0, or -1 with nothing loaded, a bad index, or (plain cabinet) a
    // stream that doesn't inflate into no room at all; `size` is 0 on every failure.
    int Decompress(int index, int& size, TeskUtils::PtrArray<unsigned char>& out, unsigned char (*md5)[16]) const;
    // As above for the last record whose alias is `alias`; -1 without a log line, and
    // `size` untouched, when there is none.
    int Decompress(const char* alias, int& size, TeskUtils::PtrArray<unsigned char>& out,
                   unsigned char (*md5)[16]) const;
    // The content of the last record of `alias`, whatever Decompress gave; an empty
    // array, `size` untouched, for an unknown alias.
    TeskUtils::PtrArray<unsigned char> GetAliasData(const char* alias, int& size) const override;
    // Frees the cabinet, its record table and the file tables derived from it.
    void freeCompressData();

    // The cabinet (compressed, or after a solid decompression the record stream); null
    // when nothing is loaded. From new[], freed here or with the object.
    unsigned char* cabinetData = nullptr;
    long cabinetDataSize = 0;
    TeskUtils::Table<CabinetFile, 100> cabinetFiles;
    int cabinetIsSolid = 0;
    // Init copies its path into installerPath (declared with the dialog model, which
    // shares it as the installer's stored path).
    unsigned int initFlags = 2;
    // The installation log in uninstall mode; null otherwise.
    FILE* logStream = nullptr;

private:
    // Frees the cabinet and closes the log when the object dies.
    struct CabinetReleaser {
        Installer* owner;
        ~CabinetReleaser();
    } cabinetReleaser{this};

public:

    // ---- Variable store and expansion (model/variables.cpp) -------------------------------

    // ---- Condition expressions (model/conditions.cpp) -------------------------------------

    // ---- Install template and product description (model/template.cpp) -------------------

    // ---- File sets (model/file_sets.cpp) --------------------------------------------------

    // ---- Default values, command line, configuration file (model/default_values.cpp) ------

    // ---- Dialog model (wizard/dialogs.cpp) ------------------------------------------------

    // ---- Navigation and triggers (wizard/navigation.cpp) ----------------------------------

    // ---- Platform operations, overridden by LinuxInstaller --------------------------------
};
