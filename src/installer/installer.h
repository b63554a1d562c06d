#pragma once
// The installation engine. One object per process: it owns the cabinet, the template
// document, the variable store, the dialogs and the file tables, and lives as long as the
// front end's main. The platform it runs on is reached only through virtual operations,
// which LinuxInstaller (src/linux) fills in.
//
// The class is large by design. Its member definitions are split by concern into files
// under src/installer/<area>/, and the declarations below are grouped by the same areas,
// in the same order. Add members to the section of their area.

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

    // ---- Variable store and expansion (model/variables.cpp) -------------------------------

    // ---- Condition expressions (model/conditions.cpp) -------------------------------------

    // ---- Install template and product description (model/template.cpp) -------------------

    // ---- File sets (model/file_sets.cpp) --------------------------------------------------

    // ---- Default values, command line, configuration file (model/default_values.cpp) ------

    // ---- Dialog model (wizard/dialogs.cpp) ------------------------------------------------

    // ---- Navigation and triggers (wizard/navigation.cpp) ----------------------------------

    // ---- Platform operations, overridden by LinuxInstaller --------------------------------
};
