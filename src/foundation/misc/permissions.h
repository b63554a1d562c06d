#pragma once
// Whether this process may install: probed by writing, never by looking at the user id.

// Makes a file from the mkstemp template `pathTemplate` (copied into 520 bytes, so the
// template itself is not changed), closes and removes it. Returns 1 when the file could be
// made, else 0 (also for a null template).
int try_create_and_delete_file(const char* pathTemplate);

// The one test of install rights: a file must be creatable both in "/etc" and in "/usr".
// Both probes always run. Returns 1 when both succeed, else 0.
int have_install_permissions();
