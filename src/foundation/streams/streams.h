#pragma once
// Byte streams and log consoles.
#include "foundation/streams/pbuf_stream.h"
#include "foundation/streams/pconsole.h"
#include "foundation/streams/pfile_stream.h"
#include "foundation/streams/pstream.h"
