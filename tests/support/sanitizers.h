// OVO_TEST_SANITIZED: the build runs under AddressSanitizer or ThreadSanitizer, whose
// rounds and process starts cost many times more. GCC says so by a macro, clang by a feature.
#ifndef OVO_TESTS_SUPPORT_SANITIZERS_H
#define OVO_TESTS_SUPPORT_SANITIZERS_H

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define OVO_TEST_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define OVO_TEST_SANITIZED 1
#endif
#endif

#endif
