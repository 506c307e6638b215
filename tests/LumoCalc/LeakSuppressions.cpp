// Fonts, the window system and Qt's plugins keep allocations for the life of the process. The
// leak checker of the sanitizer build reads this list (the same as lsan.supp, which the
// lumo-calc processes that the tests start are given).
extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig\n"
           "leak:libfreetype\n"
           "leak:libdbus-1\n"
           "leak:libglib-2.0\n"
           "leak:libQt6Core\n"
           "leak:libQt6Gui\n"
           "leak:libQt6Widgets\n"
           "leak:libqoffscreen\n"
           "leak:libqxcb\n";
}
