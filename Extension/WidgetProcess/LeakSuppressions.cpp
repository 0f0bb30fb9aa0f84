// Fontconfig, Pango, Cairo and GLib keep process-wide caches (the font
// configuration, the default font map, pools of freed surfaces, the type
// system) that live until the process ends and are never freed. When the
// widget process is built with the sanitizers, its leak checker would report
// them at exit of every command that draws and fail the process; these
// patterns keep them out of the report. Our own code is never listed. Only
// the leak checker calls this hook, by name; other builds never do.
extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() {
  return "leak:libfontconfig.so\n"
         "leak:libcairo.so\n"
         "leak:libpango-1.0.so\n"
         "leak:libpangoft2-1.0.so\n"
         "leak:libpangocairo-1.0.so\n"
         "leak:libglib-2.0.so\n"
         "leak:libgobject-2.0.so\n"
         "leak:libharfbuzz.so\n";
}
