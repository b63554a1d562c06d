#include "foundation/misc/proxy_config.h"

#include <cctype>
#include <cstdlib>

#include "foundation/strings/bounded_copy.h"
#include "foundation/strings/tokenize.h"

namespace {

TeskUtils::SystemProxyConfiguration cachedConfiguration;
bool configurationRead = false;

// The value of `name`, or of its lower-case spelling when that one is unset or empty;
// null when both are.
const char* proxyVariable(const char* name)
{
    const char* value = getenv(name);
    if (value && *value)
        return value;
    char lower[32];
    TeskUtils::copyBounded(lower, name, sizeof lower);
    for (char* c = lower; *c; ++c)
        *c = static_cast<char>(tolower(static_cast<unsigned char>(*c)));
    value = getenv(lower);
    return value && *value ? value : nullptr;
}

void readConfiguration(TeskUtils::SystemProxyConfiguration& config)
{
    const char* http = proxyVariable("HTTP_PROXY");
    const char* https = proxyVariable("HTTPS_PROXY");
    const char* ftp = proxyVariable("FTP_PROXY");
    const char* noProxy = proxyVariable("NO_PROXY");

    config = TeskUtils::SystemProxyConfiguration();
    config.found = http || https || ftp || noProxy ? 1 : 0;
    config.httpProxy = http;
    config.httpsProxy = https;
    config.ftpProxy = ftp;
    config.noProxy = noProxy;
    if (noProxy)
        TeskUtils::tokenize(noProxy, ", \t", config.noProxyItems, 0);
}

} // namespace

namespace TeskUtils {

ErrorCode getSystemProxyConfiguration(SystemProxyConfiguration& config, int refresh)
{
    if (!configurationRead || refresh) {
        readConfiguration(cachedConfiguration);
        configurationRead = true;
    }
    config = cachedConfiguration;
    return ErrorCode();
}

} // namespace TeskUtils
