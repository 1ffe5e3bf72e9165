/// @file
/// The whole library. A program that uses one family includes that family's header instead:
///
/// | to                                               | include                                           |
/// |--------------------------------------------------|---------------------------------------------------|
/// | turn texts into lengths and back                 | brenta/units.h                                    |
/// | run scripts, call them, check them               | brenta/script.h                                   |
/// | let scripts reach objects of the host            | brenta/scriptable.h, brenta/var.h                 |
/// | show what scripts print and what fails in them   | brenta/message_stream.h                           |
/// | look at what scripts have defined                | brenta/symbols.h, brenta/statements.h             |
/// | read a small language                            | brenta/lexer.h                                    |
/// | load, search, change and save a document         | brenta/xml.h                                      |
/// | read a page, or XML without the platform         | brenta/xml_readers.h                              |
/// | read a file that is too large for memory         | brenta/xml_stream.h                               |
/// | pick some values out of a file                   | brenta/xml_document.h                             |
/// | write a file without a tree                      | brenta/xml_emitter.h                              |
/// | keep settings                                    | brenta/settings.h, brenta/registry.h              |
/// | reach the web                                    | brenta/http.h, brenta/network.h                   |
/// | show messages as a page                          | brenta/error_log.h                                |
/// | build and take apart file names, find files      | brenta/files.h                                    |
/// | read and write archives                          | brenta/zip.h                                      |
/// | compare versions, take times, start programs     | brenta/system.h                                   |
/// | edit and format texts                            | brenta/string.h                                   |
/// | compare names quickly                            | brenta/names.h                                    |
/// | keep values in lists, stacks and maps            | brenta/containers.h                               |
/// | allocate many small blocks                       | brenta/heap.h                                     |
/// | handle broken contracts                          | brenta/failure.h                                  |
/// | replace what the library shows and asks          | brenta/host.h                                     |
/// | meet types that the interfaces name              | brenta/framework.h                                |
///
/// The program that prints "250000":
///
///     #include <brenta/core.h>
///
///     #include <cstdio>
///
///     int main() {
///         std::printf("%d", brenta::StringToUnit("20mil+5mil", brenta::kMils));
///     }
///
/// Three rules hold everywhere. The library throws no exceptions of its own. A null text counts as "" unless
/// an operation says otherwise. One object is used by one thread at a time, unless its header says more.

/// @mainpage Brenta Core
///
/// The library under Brenta, the circuit-board designer. Each header is the manual of its family; core.h says
/// which is for what. Guides - embedding, the script language, documents, settings - are in the folder docs
/// of the sources.
#pragma once

#include "brenta/containers.h"
#include "brenta/dump.h"
#include "brenta/error_log.h"
#include "brenta/failure.h"
#include "brenta/files.h"
#include "brenta/framework.h"
#include "brenta/heap.h"
#include "brenta/host.h"
#include "brenta/http.h"
#include "brenta/lexer.h"
#include "brenta/message_stream.h"
#include "brenta/names.h"
#include "brenta/network.h"
#include "brenta/numeric.h"
#include "brenta/registry.h"
#include "brenta/script.h"
#include "brenta/scriptable.h"
#include "brenta/settings.h"
#include "brenta/statements.h"
#include "brenta/string.h"
#include "brenta/symbols.h"
#include "brenta/system.h"
#include "brenta/units.h"
#include "brenta/var.h"
#include "brenta/xml.h"
#include "brenta/xml_emitter.h"
#include "brenta/xml_readers.h"
#include "brenta/xml_stream.h"
#include "brenta/zip.h"
