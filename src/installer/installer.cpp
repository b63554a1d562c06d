#include "installer/installer.h"

Installer::Installer() = default;

Installer::~Installer() = default;
