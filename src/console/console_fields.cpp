#include "console/console_fields.h"

#include "console/input_provider.h"
#include "foundation/misc/path_utils.h"
#include "foundation/strings/tesk_utils.h"
#include "installer/wizard/install_exchange_info.h"

#include <cstdio>
#include <cstring>

namespace ConsoleInterface {

namespace {

enum TextKind { Path, Plain, Secret };

// The field's label with its variables expanded; the raw label where expansion fails.
void expandLabel(const FIELDINFO& field, InstallExchangeInfo& exchange, char* label, int size)
{
    if (exchange.ExpandString(field.label, label, size, false) == 0)
        TeskUtils::copyBounded(label, field.label, size);
}

bool askText(const FIELDINFO& field, const InputProvider& input, InstallExchangeInfo& exchange, TextKind kind)
{
    if (!exchange.EvalCondition(field.condition))
        return false;
    char current[520] = "";
    char byDefault[520] = "";
    exchange.GetVar(field.variable, current, sizeof current);
    exchange.GetVarDefaultValue(field.variable, byDefault, sizeof byDefault);
    char label[520];
    expandLabel(field, exchange, label, sizeof label);
    char answer[520];
    if (!input.get_line(label, answer, sizeof answer, current, byDefault, kind != Secret))
        TeskUtils::copyBounded(answer, byDefault, sizeof answer);
    if (kind == Path)
        TeskUtils::uniCorrectPathString(answer);
    else if (kind == Plain)
        TeskUtils::trimWhitespace(answer);
    exchange.SetVar(field.variable, answer);
    return true;
}

} // namespace

ConsoleField* ConsoleField::create(int type)
{
    switch (type) {
    case FIELD_DIRECTORY:
        return new DirectoryField();
    case FIELD_CHECKBOX:
        return new CheckboxField();
    case FIELD_RADIO_BUTTONS:
        return new RadioField();
    case FIELD_EDIT_BOX:
        return new PlainTextField();
    case FIELD_PASSWORD:
        return new PasswordField();
    default:
        return nullptr;
    }
}

bool DirectoryField::evaluate(
    FIELDINFO const& field, InputProvider const& input, InstallExchangeInfo& exchange)
{
    return askText(field, input, exchange, Path);
}

bool PlainTextField::evaluate(
    FIELDINFO const& field, InputProvider const& input, InstallExchangeInfo& exchange)
{
    return askText(field, input, exchange, Plain);
}

bool PasswordField::evaluate(
    FIELDINFO const& field, InputProvider const& input, InstallExchangeInfo& exchange)
{
    return askText(field, input, exchange, Secret);
}

bool CheckboxField::evaluate(
    FIELDINFO const& field, InputProvider const& input, InstallExchangeInfo& exchange)
{
    if (!exchange.EvalCondition(field.condition))
        return false;
    char current[520] = "";
    exchange.GetVar(field.variable, current, sizeof current);
    int value = -1;
    if (sscanf(current, "%d", &value) != 1 || value < -1 || value > 1)
        value = -1;
    char label[520];
    expandLabel(field, exchange, label, sizeof label);
    int answer = input.question(label, value, "no", "yes", false, true);
    if (answer != 0 && answer != 1)
        return true;
    char text[16];
    snprintf(text, sizeof text, "%d", answer);
    exchange.SetVar(field.variable, text);
    return true;
}

bool RadioField::evaluate(FIELDINFO const& field, InputProvider const& input, InstallExchangeInfo& exchange)
{
    if (!exchange.EvalCondition(field.condition))
        return false;
    TeskUtils::Table<TeskUtils::CharString, 100> choices;
    TeskUtils::Table<TeskUtils::CharString, 100> descriptions;
    TeskUtils::Table<TeskUtils::CharString, 100> enables;
    TeskUtils::tokenize(field.content, ';', choices, 0);
    TeskUtils::tokenize(field.description, ';', descriptions, 0);
    TeskUtils::tokenize(field.enableCondition, ';', enables, 0);
    int count = choices.count;
    if (count < 1)
        return false;

    // Each choice reads "choice: description" where every choice can have one.
    bool described = descriptions.count > 0 && descriptions.count <= count;
    TeskUtils::Table<TeskUtils::CharString, 100> texts;
    const char** pointers = new const char*[count];
    bool* enabled = new bool[count];
    texts.setCount(count, 1);
    for (int i = 0; i < count; ++i) {
        if (described && i < descriptions.count)
            texts[i] = TeskUtils::CharString::format("%s: %s", choices[i].c_str(), descriptions[i].c_str());
        else
            texts[i] = choices[i];
        pointers[i] = texts[i].c_str();
        enabled[i] = i >= enables.count || exchange.EvalCondition(enables[i].c_str()) != 0;
    }

    char current[520] = "";
    exchange.GetVar(field.variable, current, sizeof current);
    int value = -1;
    if (sscanf(current, "%d", &value) != 1 || value < 0 || value >= count)
        value = -1;
    char label[520];
    expandLabel(field, exchange, label, sizeof label);
    int answer = input.multiplechoice(label, value, pointers, count, enabled);
    delete[] pointers;
    delete[] enabled;
    if (answer < 0 || answer >= count)
        return true;
    char text[16];
    snprintf(text, sizeof text, "%d", answer);
    exchange.SetVar(field.variable, text);
    return true;
}

} // namespace ConsoleInterface
