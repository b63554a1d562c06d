#pragma once
// All file and OS helpers in one include.
#include "foundation/misc/cl_parser.h"
#include "foundation/misc/installer_file_utils.h"
#include "foundation/misc/installer_string_utils.h"
#include "foundation/misc/path_utils.h"
#include "foundation/misc/permissions.h"
#include "foundation/misc/process_list.h"
#include "foundation/misc/proxy_config.h"
#include "foundation/misc/shell_utils.h"
