// Answers from a person at the terminal.
#include "console/input_provider.h"

#include "foundation/strings/bounded_copy.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>
#include <termios.h>
#include <unistd.h>

namespace {

// Compares an answer with one of the two offered words.
int docmp(const char* line, const char* answer, bool caseSensitive, bool prefix)
{
    if (caseSensitive && prefix)
        return strncmp(line, answer, strlen(line));
    if (caseSensitive)
        return strcmp(line, answer);
    return strcasecmp(line, answer);
}

} // namespace

bool User::readLine(char* buffer, int size) const
{
    buffer[0] = '\0';
    fflush(stdout);
    if (isInterrupted() || !fgets(buffer, size, stdin)) {
        buffer[0] = '\0';
        return false;
    }
    size_t length = strlen(buffer);
    if (length > 0 && buffer[length - 1] == '\n') {
        buffer[--length] = '\0';
    } else {
        // The line was longer than the buffer: drop the rest of it.
        int c;
        while ((c = getchar()) != EOF && c != '\n') { }
    }
    if (length > 0 && buffer[length - 1] == '\r')
        buffer[length - 1] = '\0';
    return true;
}

bool User::readHidden(char* buffer, int size) const
{
    fflush(stdout);
    struct termios saved;
    bool terminal = tcgetattr(STDIN_FILENO, &saved) == 0;
    if (terminal) {
        struct termios raw = saved;
        raw.c_lflag &= ~(ECHO | ICANON | ISIG);
        raw.c_cc[VMIN] = 1;
        raw.c_cc[VTIME] = 0;
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &raw);
    }
    int length = 0;
    bool ok = true;
    for (;;) {
        // Through stdio like every other answer, so that input read ahead for an earlier
        // question (answers from a pipe) isn't skipped.
        int next = isInterrupted() ? EOF : getchar();
        if (next == EOF) {
            ok = false;
            break;
        }
        unsigned char c = static_cast<unsigned char>(next);
        if (c == '\r' || c == '\n')
            break;
        if (c == 3 || c == 26 || c == 27) {
            // Ctrl-C, Ctrl-Z and Esc end the input as well.
            break;
        }
        if (c == 8 || c == 127) {
            if (length > 0)
                --length;
            continue;
        }
        if (length + 1 < size)
            buffer[length++] = static_cast<char>(c);
    }
    buffer[length] = '\0';
    if (terminal)
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &saved);
    fputc('\n', stdout);
    fflush(stdout);
    return ok;
}

bool User::get_line(
    const char* text, char* buffer, int size, const char* current, const char* def, bool echo) const
{
    if (!buffer || size < 1)
        return false;
    fputs(text ? text : "", stdout);
    if (current && *current)
        printf(" [%s]:", current);
    else if (def && *def)
        printf(" [%s]:", def);
    else
        fputs(":", stdout);
    char answer[4096];
    bool ok = echo ? readLine(answer, sizeof answer) : readHidden(answer, sizeof answer);
    // The end of the input is an empty answer: the value offered stands. Only an interrupt
    // makes the caller fall back to the default.
    if (!ok || answer[0] == '\0') {
        TeskUtils::copyBounded(buffer, current && *current ? current : (def ? def : ""), size);
        return !isInterrupted();
    }
    TeskUtils::copyBounded(buffer, answer, size);
    return !isInterrupted();
}

int User::question(
    const char* text, int def, const char* first, const char* second, bool caseSensitive, bool prefix) const
{
    printf("%s (", text ? text : "");
    if (def == 0)
        printf("[%s] or %s", first, second);
    else if (def == 1)
        printf("%s or [%s]", first, second);
    else
        printf("%s or %s", first, second);
    fputs("): ", stdout);
    for (;;) {
        char line[1024];
        if (!readLine(line, sizeof line))
            return def == 1 ? 1 : 0;
        if (line[0] == '\0' && (def == 0 || def == 1))
            return def;
        bool matchesFirst = line[0] && docmp(line, first, caseSensitive, prefix) == 0;
        bool matchesSecond = line[0] && docmp(line, second, caseSensitive, prefix) == 0;
        if (matchesFirst != matchesSecond)
            return matchesFirst ? 0 : 1;
        printf("Please, answer with %s or %s: ", first, second);
    }
}

int User::multiplechoice(
    const char* text, int def, const char* const* choices, int count, const bool* enabled) const
{
    if (def < 0 || def >= count || (enabled && !enabled[def]))
        def = -1;
    printf("%s\n", text ? text : "");
    for (int i = 0; i < count; ++i) {
        fputs(enabled && !enabled[i] ? "\x1b[31m" : "\x1b[0m", stdout);
        printf("  %d) %s\n", i + 1, choices[i] ? choices[i] : "");
    }
    fputs("\x1b[0m", stdout);
    for (;;) {
        printf("Enter your choice [1-%d", count);
        if (def >= 0)
            printf(", default is %d", def + 1);
        fputs("]: ", stdout);
        char line[256];
        if (!readLine(line, sizeof line))
            return def >= 0 ? def : 0;
        if (line[0] == '\0' && def >= 0)
            return def;
        char* end = nullptr;
        long number = strtol(line, &end, 10);
        bool valid = line[0] != '\0' && end && *end == '\0' && number >= 1 && number <= count;
        if (valid && enabled && !enabled[number - 1]) {
            printf("Choice %ld is disabled, choose something else!\n", number);
            continue;
        }
        if (valid)
            return static_cast<int>(number - 1);
        printf("Please, answer with a number (1 to %d)\n", count);
    }
}

void User::showmessage(const char* text) const
{
    printf("%s\nPress Enter to continue...", text ? text : "");
    char line[256];
    readLine(line, sizeof line);
}

void User::wait_for_next(const char* text) const
{
    fputs(text ? text : "", stdout);
    char line[5];
    readLine(line, sizeof line);
}

void User::interrupt()
{
    interrupted.store(1);
    close(STDIN_FILENO);
}
