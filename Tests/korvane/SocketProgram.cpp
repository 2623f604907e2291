// Only the functions that it calls are looked at.
extern "C" int listenByName() __asm__("_ZN12QLocalServer6listenERK7QString");

#ifdef HAS_BUS_SERVICE
extern "C" int makeService() __asm__("_ZN12KDBusServiceC1E6QFlagsINS_13StartupOptionEEP7QObject");
#else
static int makeService() { return 0; }
#endif

int main() { return listenByName() + makeService(); }
