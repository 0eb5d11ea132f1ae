#pragma once

// RapidJSON, for every file of ours that uses it. Its stack (1.1.0) adds an offset to a null
// pointer before its first allocation, which clang's UndefinedBehaviorSanitizer stops on; the
// comparison it feeds is harmless, and later versions compare sizes instead.
#if defined(__clang__)
#pragma clang attribute push(__attribute__((no_sanitize("pointer-overflow"))), apply_to = function)
#endif
#include <rapidjson/document.h>
#include <rapidjson/reader.h>
#if defined(__clang__)
#pragma clang attribute pop
#endif
