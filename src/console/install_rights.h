#pragma once
// How the console front end makes sure it may install: the one place that decides what
// happens when the rights are lacking.
class PConsole;

// Probes the rights to install. Where they are lacking and this is not the elevated copy
// (`child`), the lack is logged and the run goes on as it is; raising the process to root
// and carrying the user's identity across belong here.
void ensureInstallRights(bool child, int argc, char** argv, PConsole* log);
