#pragma once

// Whether this is built for an address sanitizer, under which every block of memory comes from the heap.
#if defined(__SANITIZE_ADDRESS__)
#define QX_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QX_ADDRESS_SANITIZER 1
#endif
#endif
#ifndef QX_ADDRESS_SANITIZER
#define QX_ADDRESS_SANITIZER 0
#endif
