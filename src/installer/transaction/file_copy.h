#pragma once
// A plain file copy through 1024-byte blocks ("rb" to "wb"). True once both files are
// open, however the transfer went; false when either can't be opened. The engine's
// Installer::copyFile is the checking variant.
bool copyFile(const char* from, const char* to);
