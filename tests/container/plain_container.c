/* plain_container [--listener-fails ERRNO] COMMAND [ARGUMENT...]
   Runs a command as a plain container would: making namespaces and mounting are refused, for root,
   too. Programs of the other ABI are stopped at their first such call as well.
   --listener-fails  filters of system calls that ask another process fail with this number, too: 22
                     (EINVAL) as in a kernel that has none, 1 (EPERM) as in a sandbox */
#define _GNU_SOURCE
#include <errno.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#define NAMESPACES                                                                             \
    (CLONE_NEWNS | CLONE_NEWUTS | CLONE_NEWIPC | CLONE_NEWUSER | CLONE_NEWPID | CLONE_NEWNET | \
     CLONE_NEWCGROUP)

/* Numbers of i386 in a program that is compiled for x86-64. */
enum {
    I386_MOUNT = 21,
    I386_CLONE = 120,
    I386_UNSHARE = 310,
    I386_SETNS = 346,
    I386_SECCOMP = 354
};

#define LOAD(field) BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(struct seccomp_data, field))
#define RETURN(action) BPF_STMT(BPF_RET | BPF_K, action)
#define REFUSED (SECCOMP_RET_ERRNO | EPERM)
#define ANSWER(number, action) BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 1), RETURN(action)

/* The calls of one ABI. clone3 has its flags in memory, where a filter cannot look: without it, the
   C library uses clone. */
#define CALLS(unshare, mount, setns, seccomp, clone)                                            \
    LOAD(nr), ANSWER(unshare, REFUSED), ANSWER(mount, REFUSED), ANSWER(setns, REFUSED),         \
        ANSWER(SYS_clone3, SECCOMP_RET_ERRNO | ENOSYS),                                         \
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, seccomp, 0, 4), LOAD(args[1]),                      \
        BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, SECCOMP_FILTER_FLAG_NEW_LISTENER, 0, 1),           \
        RETURN(new_listener), RETURN(SECCOMP_RET_ALLOW),                                        \
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, clone, 1, 0), RETURN(SECCOMP_RET_ALLOW),            \
        LOAD(args[0]), BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, NAMESPACES, 0, 1), RETURN(REFUSED), \
        RETURN(SECCOMP_RET_ALLOW)
#define LENGTH_OF_CALLS 20

int main(int argc, char** argv)
{
    unsigned new_listener = SECCOMP_RET_ALLOW;
    if (argc > 2 && strcmp(argv[1], "--listener-fails") == 0) {
        new_listener = SECCOMP_RET_ERRNO | (strtoul(argv[2], NULL, 10) & SECCOMP_RET_DATA);
        argc -= 2;
        argv += 2;
    }
    struct sock_filter filter[] = {
        LOAD(arch),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, AUDIT_ARCH_I386, LENGTH_OF_CALLS, 0),
        CALLS(SYS_unshare, SYS_mount, SYS_setns, SYS_seccomp, SYS_clone),
        CALLS(I386_UNSHARE, I386_MOUNT, I386_SETNS, I386_SECCOMP, I386_CLONE),
    };
    struct sock_fprog program = {sizeof(filter) / sizeof(filter[0]), filter};
    if (argc < 2) {
        fprintf(stderr, "plain_container [--listener-fails ERRNO] COMMAND [ARGUMENT...]\n");
        return 2;
    }
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, 0, &program) != 0) {
        perror("plain_container: seccomp");
        return 1;
    }
    execvp(argv[1], argv + 1);
    perror(argv[1]);
    return 127;
}
