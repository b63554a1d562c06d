#pragma once
// ExtendedRunProgramParams: the parsed children of a "RunProgramEx" action — environment
// settings, pipes and the system error handling mode. The engine parses and checks them
// in full and hands them to the process runner, which on Linux does not act on them.
#include "foundation/strings/char_string.h"
#include "foundation/strings/table.h"

struct ExtendedRunProgramParams
{
    // One "Environment" child: a variable to set for the child program.
    struct Environment
    {
        enum { KeepCurrent = 1, Append = 2, Prepend = 4 };
        unsigned flags = 0; // mask of KeepCurrent, Append, Prepend
        TeskUtils::CharString name;
        TeskUtils::CharString value; // empty with KeepCurrent
    };

    // One "Pipe" child: where a standard stream of the child goes.
    struct Pipe
    {
        enum { Stdout = 1, Stderr = 2, Stdin = 3 };
        enum { Void = 0, File = 1 };
        int type = 0; // Stdout, Stderr or Stdin
        int dest = File; // Void or File
        TeskUtils::CharString fileName; // the expanded file for File
    };

    TeskUtils::Table<Environment, 16> environment;
    TeskUtils::Table<Pipe, 8> pipes;
    int systemErrorHandling = 0;
    bool hasSystemErrorHandling = false;
};
