// lsan_suppressions.cpp -- leaks of system libraries that LeakSanitizer should not count against us.

// fontconfig keeps its configuration for the life of the process; Qt's font
// database loads it on the first text drawn. Read only by sanitizer builds.
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig.so\n"; }
