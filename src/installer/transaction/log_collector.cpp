#include "installer/transaction/log_collector.h"

#include "foundation/strings/bounded_copy.h"
#include "installer/wizard/installer_ui.h"

void LogCollector::AddEntry(const char* text)
{
    if (!text)
        return;
    Row& row = rows.append();
    TeskUtils::copyBounded(row.text, text, sizeof row.text);
}

const char* LogCollector::GetEntry(int index) const
{
    if (index < 0 || index >= rows.count)
        return nullptr;
    return rows.data[index].text;
}

void LogCollector::OutputLogCollection(InstallerUI* ui, const char* title) const
{
    if (!ui)
        return;
    if (title) {
        ui->StartDecompress();
        ui->EndDecompress(title, false);
    }
    for (int i = 0; i < rows.count; ++i) {
        ui->StartDecompress();
        ui->EndDecompress(rows.data[i].text, i % 32 == 0);
    }
    ui->EndDecompress(nullptr, true);
}
