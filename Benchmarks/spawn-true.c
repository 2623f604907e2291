/* The least that starting a program costs: spawn /bin/true, wait, end with its status. */
#include <spawn.h>
#include <stdio.h>
#include <string.h>
#include <sys/wait.h>

extern char** environ;

int main(void) {
    char* arguments[] = {"/bin/true", NULL};
    pid_t child = 0;
    int status = posix_spawn(&child, arguments[0], NULL, NULL, arguments, environ);
    if (status != 0) {
        fprintf(stderr, "spawn-true: %s\n", strerror(status));
        return 127;
    }
    if (waitpid(child, &status, 0) != child || !WIFEXITED(status)) return 126;
    return WEXITSTATUS(status);
}
