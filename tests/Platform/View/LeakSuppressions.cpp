// Fontconfig, Pango and Cairo keep process-wide caches (the font
// configuration, the default font map, pools of freed surfaces) that live
// until the process ends and are never freed. The leak checker of the
// sanitizer build would report them as leaks at exit; these patterns keep
// them out of the report. The checker calls this hook by name; other builds
// never do.
extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() {
  return "leak:libfontconfig.so\n"
         "leak:libcairo.so\n"
         "leak:libpango-1.0.so\n"
         "leak:libpangoft2-1.0.so\n"
         "leak:libpangocairo-1.0.so\n";
}
