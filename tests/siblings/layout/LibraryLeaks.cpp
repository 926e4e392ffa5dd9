// What the libraries keep until the process ends, or forget, and the leak checker of a sanitized
// build would report: the caches of fonts, and a few hundred bytes of Cairo's for a PDF with links.
extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() {
  return "leak:libfontconfig.so\nleak:libcairo.so\n";
}
