// Part of ThreadSanitizer builds only. The transport library is not instrumented: the sanitizer
// sees its allocations and copies, but not the atomic operations that order them. What it does is
// left out of the analysis, and what it orders is left out too, so that no order between our own
// threads is ever taken for granted because of it: all data crosses the library by value.

extern "C" const char* __tsan_default_suppressions();

extern "C" const char* __tsan_default_suppressions() {
  return "called_from_lib:libzmq.so\n"
         "race:libzmq.so\n";
}
