/* Preloaded: ends the program where it unlocks with the kernel's promise to do so itself. */
#define _GNU_SOURCE
#include <signal.h>
#include <stddef.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <unistd.h>

int semop(int set, struct sembuf* operations, size_t count)
{
    if (operations->sem_op == 1 && (operations->sem_flg & SEM_UNDO) != 0)
        kill(getpid(), SIGKILL);
    return semtimedop(set, operations, count, NULL);
}
