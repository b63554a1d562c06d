#pragma once
// A front end in miniature, written against the exchange interface alone: it reads every
// dialog, sub-dialog, control, field, button and task the way a front end would and
// describes what it saw, one line per (sub-)dialog.
#include <string>

class InstallExchangeInfo;

namespace quilbtest {

std::string describeWizard(InstallExchangeInfo& exchange);

} // namespace quilbtest
