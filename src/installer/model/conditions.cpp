// Evaluation of template conditions: the text is expanded as a template text, then parsed
// by ConditionParser. A condition that can't be parsed gives -1, which is not 0, so every
// caller takes it as true; the warning in the log is all the template's author gets.
#include "foundation/streams/pconsole.h"
#include "installer/installer.h"
#include "installer/model/condition_parser.h"

int Installer::EvalCondition(const char* condition)
{
    if (!condition || !*condition)
        return 1;

    int needed = ExpandString(condition, conditionBuffer.data, conditionBuffer.capacity, false);
    if (needed == 0)
        return 0;
    if (needed > conditionBuffer.capacity) {
        conditionBuffer.grow(needed);
        ExpandString(condition, conditionBuffer.data, conditionBuffer.capacity, false);
    }

    // Text behind a complete condition is ignored without a word.
    int pos = 0;
    int result = ConditionParser::alternatives(conditionBuffer.data, pos);
    if (result == -1 && debugConsole)
        debugConsole->Dump("WARNING: Encountered errors in condition: \"%s\"", condition);
    return result;
}
