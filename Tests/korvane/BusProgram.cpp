// Only the function that it calls is looked at.
extern "C" int runApplication() __asm__("g_application_run");

int main() { return runApplication(); }
