// A program for tests to start: it is linked as the runner is, and brings the windows of processes
// to the front. Reads their ids from standard input, a line for each time, and answers each line
// with "called" as soon as the call has returned. Ends with the input.
#include "korvane-runner/Desktop/Linux/X11Windows.h"

#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>

int main() {
    korvane::runner::X11Windows windows;
    for (std::string line; std::getline(std::cin, line);) {
        std::istringstream words(line);
        std::set<int> processes;
        for (int process = 0; words >> process;) processes.insert(process);
        windows.bringToFront(processes);
        std::puts("called");
        std::fflush(stdout);
    }
}
