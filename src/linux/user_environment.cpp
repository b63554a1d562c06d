// The identity of the user who started the installer, carried across the elevation to root in
// five environment variables, and taken on again by children that act for that user.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <pwd.h>
#include <sys/types.h>
#include <unistd.h>

#include "foundation/strings/tokenize.h"
#include "linux/linux_installer.h"

const char* const LinuxInstaller::kOriginalUidVar = "QUILB_INSTALL_ORIGINAL_UID";
const char* const LinuxInstaller::kOriginalGidVar = "QUILB_INSTALL_ORIGINAL_GID";
const char* const LinuxInstaller::kOriginalEgidVar = "QUILB_INSTALL_ORIGINAL_EGID";
const char* const LinuxInstaller::kOriginalUserNameVar = "QUILB_INSTALL_ORIGINAL_USER_NAME";
const char* const LinuxInstaller::kOriginalHomeVar = "QUILB_INSTALL_ORIGINAL_HOME";

namespace {

// Stores a number as decimal text; true when setenv succeeded.
bool setNumber(const char* name, unsigned long value)
{
    char text[16];
    snprintf(text, sizeof text, "%lu", value);
    return setenv(name, text, 1) == 0;
}

// Parses a decimal id; false for text that is no number at all.
bool parseId(const char* text, unsigned long& value)
{
    if (!text || !*text)
        return false;
    char* end = nullptr;
    errno = 0;
    value = strtoul(text, &end, 10);
    return errno == 0 && end != text;
}

// The user id that pkexec leaves, and that user's record, for a root started through pkexec,
// which sets none of the SUDO_ variables. Null when there is none.
const struct passwd* pkexecUser(unsigned long& uid)
{
    if (!parseId(getenv("PKEXEC_UID"), uid))
        return nullptr;
    return getpwuid(static_cast<uid_t>(uid));
}

} // namespace

bool LinuxInstaller::saveUserEnvironment()
{
    bool stored = true;
    uid_t uid = getuid();
    stored &= setNumber(kOriginalUidVar, uid);
    if (const struct passwd* user = getpwuid(uid))
        stored &= setenv(kOriginalUserNameVar, user->pw_name, 1) == 0;
    stored &= setNumber(kOriginalGidVar, getgid());
    stored &= setNumber(kOriginalEgidVar, getegid());
    const char* home = getenv("HOME");
    if (!home)
        return false;
    stored &= setenv(kOriginalHomeVar, home, 1) == 0;
    return stored;
}

unsigned LinuxInstaller::checkOriginalUserEnvironment()
{
    // Each missing item sets its own bit together with bit value 1 ("missing").
    unsigned mask = 0;
    if (!getenv(kOriginalGidVar))
        mask |= kEnvGid | kEnvMissing;
    if (!getenv(kOriginalEgidVar))
        mask |= kEnvEgid | kEnvMissing;
    if (!getenv(kOriginalUidVar))
        mask |= kEnvUid | kEnvMissing;
    if (!getenv(kOriginalUserNameVar))
        mask |= kEnvUser | kEnvMissing;
    if (!getenv(kOriginalHomeVar))
        mask |= kEnvHome | kEnvMissing;
    return mask;
}

unsigned LinuxInstaller::saveElevatedEnvironment()
{
    unsigned mask = 0;
    // Without sudo's variables the user may have come through pkexec: its PKEXEC_UID and the
    // password database stand in for each of them.
    unsigned long pkexecUid = 0;
    const struct passwd* pkexec = getenv("SUDO_UID") ? nullptr : pkexecUser(pkexecUid);

    const char* userName = getenv("SUDO_USER");
    if (!userName && pkexec)
        userName = pkexec->pw_name;
    if (!userName || setenv(kOriginalUserNameVar, userName, 1) != 0)
        mask |= kEnvUser;

    unsigned long uid = 0;
    const char* uidText = getenv("SUDO_UID");
    if (uidText) {
        if (setenv(kOriginalUidVar, uidText, 1) != 0)
            mask |= kEnvUid;
        if (!parseId(uidText, uid))
            uid = 0;
    } else if (pkexec) {
        uid = pkexecUid;
        if (!setNumber(kOriginalUidVar, uid))
            mask |= kEnvUid;
    } else {
        mask |= kEnvUid;
    }

    const char* gidText = getenv("SUDO_GID");
    if (gidText) {
        if (setenv(kOriginalGidVar, gidText, 1) != 0)
            mask |= kEnvGid;
        if (setenv(kOriginalEgidVar, gidText, 1) != 0)
            mask |= kEnvEgid;
    } else if (pkexec) {
        if (!setNumber(kOriginalGidVar, pkexec->pw_gid))
            mask |= kEnvGid;
        if (!setNumber(kOriginalEgidVar, pkexec->pw_gid))
            mask |= kEnvEgid;
    } else {
        mask |= kEnvGid | kEnvEgid;
    }

    const struct passwd* user = getpwuid(static_cast<uid_t>(uid));
    if (user && user->pw_dir) {
        if (setenv(kOriginalHomeVar, user->pw_dir, 1) != 0)
            mask |= kEnvHome;
    } else {
        mask |= kEnvHome;
    }
    return mask;
}

unsigned LinuxInstaller::restoreUserEnvironment()
{
    unsigned mask = 0;

    // The group first: once the user id has changed the group can't be changed any more.
    const char* gidText = getenv(kOriginalGidVar);
    const char* egidText = getenv(kOriginalEgidVar);
    if (gidText || egidText) {
        unsigned long gid = 0;
        unsigned long egid = 0;
        gid_t real = gidText && parseId(gidText, gid) ? static_cast<gid_t>(gid) : static_cast<gid_t>(-1);
        gid_t effective
            = egidText && parseId(egidText, egid) ? static_cast<gid_t>(egid) : static_cast<gid_t>(-1);
        if (setregid(real, effective) != 0)
            mask = kEnvGid | kEnvEgid;
    } else if (const char* sudoGid = getenv("SUDO_GID")) {
        unsigned long gid = 0;
        parseId(sudoGid, gid);
        if (setregid(static_cast<gid_t>(gid), static_cast<gid_t>(gid)) != 0)
            mask = kEnvGid | kEnvEgid;
    } else {
        mask = kEnvMissing;
    }

    const char* uidText = getenv(kOriginalUidVar);
    if (!uidText)
        uidText = getenv("SUDO_UID");
    unsigned long uid = 0;
    bool uidKnown = uidText != nullptr;
    if (uidKnown) {
        parseId(uidText, uid);
        if (setuid(static_cast<uid_t>(uid)) != 0)
            mask |= kEnvUid;
    } else {
        mask |= kEnvUid | kEnvMissing;
    }

    if (const char* home = getenv(kOriginalHomeVar)) {
        if (setenv("HOME", home, 1) != 0)
            mask |= kEnvHome;
        return mask;
    }

    // No home was carried over: the password database's one for the user will do.
    const unsigned before = mask;
    mask |= kEnvHome | kEnvMissing;
    const struct passwd* user = uidKnown ? getpwuid(static_cast<uid_t>(uid)) : nullptr;
    if (user && user->pw_dir) {
        mask = before;
        if (setenv("HOME", user->pw_dir, 1) != 0)
            mask |= kEnvHome;
    }
    return mask;
}

TeskUtils::CharString LinuxInstaller::environmentErrorStringFromMask(unsigned mask)
{
    if (mask == 0)
        return TeskUtils::CharString("");
    static const char* const names[] = { "", "uid", "gid", "egid", "home", "user" };
    TeskUtils::CharString list = TeskUtils::stringListFromMask(mask & ~kEnvMissing, names, 6, ", ");
    return TeskUtils::CharString::format("{%s}", list.c_str());
}
