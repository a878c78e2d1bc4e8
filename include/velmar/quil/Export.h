// Only the public classes of libvelmar_quil are exported; everything else is
// built with hidden visibility.
#pragma once

#if defined(VELMAR_QUIL_BUILD)
#define VELMAR_QUIL_EXPORT __attribute__((visibility("default")))
#else
#define VELMAR_QUIL_EXPORT
#endif
