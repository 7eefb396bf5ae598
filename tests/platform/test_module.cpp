// A library with one exported function, loaded at run time by the SharedLibrary tests.
#if defined(_WIN32)
#  define TEST_MODULE_EXPORT __declspec(dllexport)
#else
#  define TEST_MODULE_EXPORT __attribute__((visibility("default")))
#endif

extern "C" TEST_MODULE_EXPORT int ovo_test_answer() { return 42; }
