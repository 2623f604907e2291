// Only the function that it calls is looked at.
extern "C" int g_application_run();

int main() { return g_application_run(); }
