#pragma once
// LogCollector: the error rows that a run collects and shows at its end. Each row is a
// fixed text of 520 bytes; a longer text is cut at 519 characters. The engine owns one for
// its whole life; the install run, the uninstall run and the later steps add to it.
#include "foundation/strings/table.h"

class InstallerUI;

class LogCollector
{
public:
    struct Row
    {
        char text[520];
    };

    // Appends `text`, cut at 519 characters; null is ignored.
    void AddEntry(const char* text);
    int GetCount() const { return rows.count; }
    // Row `index`, or null outside the table.
    const char* GetEntry(int index) const;
    // Shows the rows on `ui` (nothing at all for a null ui): the title first when given,
    // then each row as a line of the list, with a refresh at every 32nd row starting with
    // the first, and a closing EndDecompress(null, true).
    void OutputLogCollection(InstallerUI* ui, const char* title) const;
    // Forgets every row.
    void Clear() { rows.freeData(); }

    TeskUtils::Table<Row, -1> rows;
};
