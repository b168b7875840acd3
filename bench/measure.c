// measure ROUNDS COMMAND...: runs the command lines in turn, ROUNDS times, and prints one line for
// each: median, lower and upper quartile of the wall time, median of the processor time, all in
// microseconds, and the largest resident size in KiB. They run in turn so that other load on the
// machine affects all of them alike. Blanks separate words; there is no shell, and standard output
// is discarded.
//
// It is a small program of its own because Linux counts the pages of a parent process into the peak
// of its children.

#define _GNU_SOURCE
#include <fcntl.h>
#include <spawn.h>
#include <stdio.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <stdlib.h>
#include <string.h>
#include <time.h>

extern char** environ;

enum { max_words = 32 };

struct command {
    char* words[max_words + 1];
    double* wall;
    double* processor;
    long peak;
};

static double microseconds_now(void) {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return 1e6 * (double)now.tv_sec + 1e-3 * (double)now.tv_nsec;
}

static int compare(const void* a, const void* b) {
    const double left = *(const double*)a;
    const double right = *(const double*)b;
    return (left > right) - (left < right);
}

static double microseconds_of(const struct timeval* time) {
    return 1e6 * (double)time->tv_sec + (double)time->tv_usec;
}

static void run(struct command* command, int round, const posix_spawn_file_actions_t* quiet) {
    const double start = microseconds_now();
    pid_t child;
    if (posix_spawn(&child, command->words[0], quiet, NULL, command->words, environ) != 0) {
        perror(command->words[0]);
        exit(1);
    }
    int status;
    struct rusage usage;
    wait4(child, &status, 0, &usage);
    command->wall[round] = microseconds_now() - start;
    command->processor[round] = microseconds_of(&usage.ru_utime) + microseconds_of(&usage.ru_stime);
    if (status != 0) {
        fprintf(stderr, "measure: %s failed\n", command->words[0]);
        exit(1);
    }
    if (usage.ru_maxrss > command->peak) {
        command->peak = usage.ru_maxrss;
    }
}

int main(int argc, char** argv) {
    const int rounds = argc > 2 ? atoi(argv[1]) : 0;
    if (rounds <= 0) {
        fputs("usage: measure ROUNDS COMMAND...\n", stderr);
        return 2;
    }
    const int count = argc - 2;
    struct command* commands = calloc((size_t)count, sizeof *commands);
    for (int i = 0; i < count; ++i) {
        char** word = commands[i].words;
        for (char* part = strtok(argv[i + 2], " "); part != NULL; part = strtok(NULL, " ")) {
            if (word == commands[i].words + max_words) {
                fputs("measure: too many words in a command\n", stderr);
                return 2;
            }
            *word++ = part;
        }
        commands[i].wall = calloc((size_t)rounds, sizeof(double));
        commands[i].processor = calloc((size_t)rounds, sizeof(double));
    }
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);

    for (int round = 0; round < rounds; ++round) {
        for (int i = 0; i < count; ++i) {
            run(&commands[i], round, &quiet);
        }
    }
    for (int i = 0; i < count; ++i) {
        const struct command* command = &commands[i];
        qsort(command->wall, (size_t)rounds, sizeof(double), compare);
        qsort(command->processor, (size_t)rounds, sizeof(double), compare);
        printf("%.0f %.0f %.0f %.0f %ld\n", command->wall[rounds / 2], command->wall[rounds / 4],
               command->wall[rounds * 3 / 4], command->processor[rounds / 2], command->peak);
    }
    return 0;
}
