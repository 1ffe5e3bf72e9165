/// @file
/// The whole library. A program that uses one family includes that family's header instead.
#pragma once

#include "brenta/containers.h"
#include "brenta/dump.h"
#include "brenta/failure.h"
#include "brenta/files.h"
#include "brenta/framework.h"
#include "brenta/heap.h"
#include "brenta/host.h"
#include "brenta/lexer.h"
#include "brenta/message_stream.h"
#include "brenta/names.h"
#include "brenta/script.h"
#include "brenta/scriptable.h"
#include "brenta/settings.h"
#include "brenta/statements.h"
#include "brenta/string.h"
#include "brenta/symbols.h"
#include "brenta/units.h"
#include "brenta/var.h"
#include "brenta/xml.h"
#include "brenta/xml_readers.h"
