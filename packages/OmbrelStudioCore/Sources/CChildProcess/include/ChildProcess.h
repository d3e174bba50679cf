#pragma once

#include <sys/types.h>

// Starts a program whose end is waited for and which does not outlive us: it and its process group
// get `endSignal` when we are told to end, and on Linux it also gets it when we are killed. Both its
// streams go where ours go; `outputToError` sends its standard output to our standard error instead.
// Call it on the main thread, one child at a time.
//
// Returns the status as of waitpid, or -1 with errno set when the program can't be started.
int childProcessRun(const char *path, char *const arguments[], int outputToError, int endSignal);
