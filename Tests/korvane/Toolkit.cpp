// Stands for a library of which only the names are looked at, its own and that of its function.
extern "C" {
__attribute__((visibility("default"))) int korvaneTestToolkit();
__attribute__((visibility("default"))) int runApplication() __asm__("g_application_run");
}

int korvaneTestToolkit() { return 0; }
int runApplication() { return 0; }
