#pragma once
// The fields of a dialog as the console asks them: one class per field type, each reading
// the variable's current value, asking through the input provider and storing the answer.
#include "installer/wizard/dialog_records.h"

class InputProvider;
class InstallExchangeInfo;

namespace ConsoleInterface {

class ConsoleField
{
public:
    virtual ~ConsoleField() { }
    // Asks for `field` when its condition holds; true when it was asked.
    virtual bool evaluate(FIELDINFO const& field, InputProvider const& input, InstallExchangeInfo& exchange)
        = 0;

    // The field for a field type; null for the types the console passes over.
    static ConsoleField* create(int type);
};

// A directory: the answer is a path and gets its delimiters corrected.
class DirectoryField : public ConsoleField
{
public:
    bool evaluate(FIELDINFO const& field, InputProvider const& input, InstallExchangeInfo& exchange) override;
};

// Yes or no, stored as "0" or "1".
class CheckboxField : public ConsoleField
{
public:
    bool evaluate(FIELDINFO const& field, InputProvider const& input, InstallExchangeInfo& exchange) override;
};

// One of the choices of `Content`, stored as its index.
class RadioField : public ConsoleField
{
public:
    bool evaluate(FIELDINFO const& field, InputProvider const& input, InstallExchangeInfo& exchange) override;
};

// A line of text, trimmed.
class PlainTextField : public ConsoleField
{
public:
    bool evaluate(FIELDINFO const& field, InputProvider const& input, InstallExchangeInfo& exchange) override;
};

// A line of text read without echo, kept as typed.
class PasswordField : public ConsoleField
{
public:
    bool evaluate(FIELDINFO const& field, InputProvider const& input, InstallExchangeInfo& exchange) override;
};

} // namespace ConsoleInterface
