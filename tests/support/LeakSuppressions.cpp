// What the leak checker shall pass over: the C library does not free its copy of LOCPATH.

extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() { return "leak:argz_add_sep\n"; }
