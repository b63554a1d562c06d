#pragma once
// How the console front end makes sure it may install: the one place that decides what
// happens when the rights are lacking.
class PConsole;

// Probes the rights to install. Where they are lacking and this is not the elevated copy
// (`child`), the user's identity is stored in the environment and the program replaces
// itself by a copy started as root through sudo or su, with the same arguments and "-child".
// Only when that fails does it return, after printing "ERROR: opening with root privileges";
// the run then goes on with the rights it has. Where the rights are at hand and the identity
// variables are missing (started as root directly), they are derived from sudo's or pkexec's
// variables; a failure there is only logged.
void ensureInstallRights(bool child, int argc, char** argv, PConsole* log);
