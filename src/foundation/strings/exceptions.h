#pragma once
// The exceptions of the program. Each formats its text at construction (printf-style, cut to
// the size of its buffer) and gives it back through what(). They derive from nothing else, so
// they are caught by their own types.

namespace TeskUtils {

// Thrown by the base library (e.g. when a node pool cannot grow). Text up to 1023 characters.
class ExceptionMsg
{
public:
    explicit ExceptionMsg(const char* format, ...) __attribute__((format(printf, 2, 3)));
    virtual ~ExceptionMsg() { }
    virtual const char* what() const { return text; }

private:
    char text[1024];
};

} // namespace TeskUtils

// A failure of the program at large. Text up to 4095 characters.
class GenericError
{
public:
    explicit GenericError(const char* format, ...) __attribute__((format(printf, 2, 3)));
    virtual ~GenericError() { }
    virtual const char* what() const { return text; }

protected:
    // For derived classes that format the text themselves.
    GenericError() { text[0] = '\0'; }
    char text[4096];
};

// A failure of the installer engine; caught as a GenericError as well.
class InstallerError : public GenericError
{
public:
    explicit InstallerError(const char* format, ...) __attribute__((format(printf, 2, 3)));
};
