// Symbol visibility of the porting layer. The ports are built with
// -fvisibility=hidden; only what is marked here is part of their ABI.
#pragma once

#if defined(VELMAR_PORT_BUILD)
#define VELMAR_PORT_EXPORT __attribute__((visibility("default")))
#else
#define VELMAR_PORT_EXPORT
#endif
