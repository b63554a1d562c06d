#pragma once
// The proxy servers configured for this session, from the usual environment variables.
#include "foundation/strings/char_string.h"
#include "foundation/strings/error_code.h"
#include "foundation/strings/table.h"

namespace TeskUtils {

struct SystemProxyConfiguration
{
    // 1 when any of the four variables is set to a non-empty value.
    int found = 0;
    // The values as they stand (no parsing of scheme, host or port); null when unset/empty.
    CharString httpProxy;
    CharString httpsProxy;
    CharString ftpProxy;
    CharString noProxy;
    // The no-proxy list split at commas, spaces and tabs, empty items left out.
    Table<CharString, 100> noProxyItems;
};

// Reads "HTTP_PROXY", "HTTPS_PROXY", "FTP_PROXY" and "NO_PROXY", each falling back to its
// lower-case spelling when unset or empty, and copies the result into `config`. The reading
// is done at the first call and again whenever `refresh` is non-zero; otherwise the result of
// the last reading is given. Never gives an error.
ErrorCode getSystemProxyConfiguration(SystemProxyConfiguration& config, int refresh);

} // namespace TeskUtils
