/* Stands for a signing tool: works for some milliseconds, and shows entitlements. */
#include <stdint.h>
#include <stdio.h>

int main(void) {
    volatile uint64_t state = 88172645463325252ULL;
    for (int round = 0; round < 2000000; ++round) {
        uint64_t next = state;
        next ^= next << 13;
        next ^= next >> 7;
        next ^= next << 17;
        state = next;
    }
    puts("<plist><dict><key>com.apple.security.app-sandbox</key><true/></dict></plist>");
    return state == 0;
}
