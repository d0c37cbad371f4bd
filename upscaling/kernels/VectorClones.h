#pragma once

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
#define KELVANE_VECTOR_CLONES
#elif defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
// One copy of a kernel per instruction set, chosen when the library is loaded. Sanitizers do not stand the choice.
#define KELVANE_VECTOR_CLONES __attribute__((target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")))
#else
#define KELVANE_VECTOR_CLONES
#endif
