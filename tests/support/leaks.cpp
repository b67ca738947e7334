// What the leak checker of the sanitizers passes over: the sound server's library keeps its streams when the
// server dies under them.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libpulse\n";
}
