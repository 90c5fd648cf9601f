#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/epoll.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include "probe.h"

static unsigned char buffer[512];

static int option(int fd, int name)
{
    int value = -1;
    socklen_t size = sizeof value;
    return getsockopt(fd, SOL_SOCKET, name, &value, &size) == 0 ? value : -1;
}

static int lowest(void)
{
    const int fd = open("/dev/null", O_RDONLY);
    close(fd);
    // cppcheck-suppress deallocret ; the number is what is asked for
    return fd;
}

void probe_sockets(void)
{
    unsigned char address[16] = {43, 0, 0, 13};
    socklen_t size = sizeof address;
    const int expected = lowest();
    const int fd = socket(43, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    row("socket is the lowest number", fd == expected);
    row("close-on-exec", fcntl(fd, F_GETFD) & FD_CLOEXEC);
    row("non-blocking", (fcntl(fd, F_GETFL) & O_NONBLOCK) != 0);
    row("SO_DOMAIN", option(fd, SO_DOMAIN));
    row("SO_TYPE", option(fd, SO_TYPE));
    row("recv unbound", recv(fd, buffer, sizeof buffer, 0));
    row("send unbound", send(fd, buffer, 8, MSG_NOSIGNAL));
    row("bind to another id", bind(fd, (struct sockaddr*)address, sizeof address));
    row("bind, too short", bind(fd, (struct sockaddr*)address, 8));
    row("bind nowhere", bind(fd, nowhere, sizeof address));
    address[3] = 12;
    row("bind", bind(fd, (struct sockaddr*)address, sizeof address));
    row("bind again", bind(fd, (struct sockaddr*)address, sizeof address));
    memset(address, 0, sizeof address);
    row("getsockname", getsockname(fd, (struct sockaddr*)address, &size));
    row("its length", size);
    row("its family", address[0]);
    row("its id", address[3]);
    close(fd);
    row("recv closed", recv(fd, buffer, sizeof buffer, 0));
    // cppcheck-suppress leakReturnValNotUsed ; there is none to close
    row("another family", socket(44, SOCK_DGRAM, 0) >= 0 ? 0 : 1);
    row("inet still works", close(socket(AF_INET, SOCK_DGRAM, 0)));
}

static void on_alarm(int signal)
{
    (void)signal;
}

/* Both families' messages are on their way to others: nothing is left for this one. */
static void probe_waiting(void)
{
    const int first = mailbox(SOCK_DGRAM);
    const int second = mailbox(SOCK_DGRAM);
    const int fd = mailbox(SOCK_DGRAM);
    struct pollfd polled = {fd, POLLIN, 0};
    const struct timeval limit = {0, 20000};
    struct sigaction action;
    const struct itimerval often = {{0, 20000}, {0, 20000}};
    const struct itimerval never = {{0, 0}, {0, 0}};
    row("recv MSG_DONTWAIT", recv(fd, buffer, sizeof buffer, MSG_DONTWAIT));
    row("poll", poll(&polled, 1, 20));
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    row("recv until a time-out", recv(fd, buffer, sizeof buffer, 0));
    memset(&action, 0, sizeof action);
    action.sa_handler = on_alarm;
    sigaction(SIGALRM, &action, NULL);
    recv(first, buffer, sizeof buffer, 0);
    setitimer(ITIMER_REAL, &often, NULL);
    row("recv until a signal", recv(first, buffer, sizeof buffer, 0));
    setitimer(ITIMER_REAL, &never, NULL);
    close(first);
    row("the next has it then", recv(fd, buffer, sizeof buffer, 0));
    close(fd);
    close(second);
}

static long by_message(int fd, int* flags)
{
    struct iovec part = {buffer, 10};
    struct msghdr message;
    long result;
    memset(&message, 0, sizeof message);
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    result = recvmsg(fd, &message, 0);
    *flags = message.msg_flags;
    return result;
}

static void probe_readiness(void)
{
    int fd = mailbox(SOCK_DGRAM);
    struct pollfd polled = {fd, POLLIN, 0};
    fd_set set;
    struct epoll_event event = {.events = EPOLLIN};
    const int epoll = epoll_create1(0);
    row("poll, ready", poll(&polled, 1, 1000));
    FD_ZERO(&set);
    FD_SET(fd, &set);
    row("select, ready", select(fd + 1, &set, NULL, NULL, NULL));
    epoll_ctl(epoll, EPOLL_CTL_ADD, fd, &event);
    row("epoll, ready", epoll_wait(epoll, &event, 1, 1000));
    row("peek", recv(fd, buffer, sizeof buffer, MSG_PEEK));
    row("peek again", recv(fd, buffer, 10, MSG_PEEK | MSG_TRUNC));
    row("recv after peeking", recv(fd, buffer, sizeof buffer, 0));
    close(epoll);
    close(fd);
}

static void probe_copies(const char* self)
{
    int fd = mailbox(SOCK_DGRAM);
    const int copy = dup(fd);
    char number[16];
    int status = 0;
    close(fd);
    row("recv from a duplicate", recv(copy, buffer, sizeof buffer, 0));
    close(copy);
    fd = mailbox(SOCK_DGRAM);
    fflush(stdout);
    if (fork() == 0)
        _exit((int)recv(fd, buffer, sizeof buffer, 0));
    wait(&status);
    row("recv in a child", WEXITSTATUS(status));
    close(fd);
    fd = mailbox(SOCK_DGRAM);
    snprintf(number, sizeof number, "%d", fd);
    fflush(stdout);
    if (fork() == 0) {
        execl(self, self, "inherited", number, (char*)NULL);
        _exit(1);
    }
    wait(&status);
    row("recv after exec", WEXITSTATUS(status));
    close(fd);
}

int probe_inherited(const char* number)
{
    return (int)recv(atoi(number), buffer, sizeof buffer, 0);
}

void probe_receiving(const char* self)
{
    struct iovec parts[2] = {{buffer, 4}, {buffer + 4, 400}};
    int flags = 0;
    int fd = mailbox(SOCK_DGRAM);
    row("recv", recv(fd, buffer, sizeof buffer, 0));
    row("type of the message", buffer[3]);
    close(fd);
    fd = mailbox(SOCK_STREAM);
    row("recv, cut", recv(fd, buffer, 10, 0));
    close(fd);
    fd = mailbox(SOCK_SEQPACKET);
    row("recv, cut, MSG_TRUNC", recv(fd, buffer, 10, MSG_TRUNC));
    close(fd);
    fd = mailbox(0);
    row("recvmsg, cut", by_message(fd, &flags));
    row("its flags", flags & MSG_TRUNC);
    close(fd);
    fd = mailbox(SOCK_DGRAM);
    row("read", read(fd, buffer, sizeof buffer));
    close(fd);
    fd = mailbox(SOCK_DGRAM);
    row("readv", readv(fd, parts, 2));
    close(fd);
    probe_waiting();
    probe_readiness();
    probe_copies(self);
}

static long by_vector(int fd, struct iovec* parts)
{
    struct msghdr message;
    memset(&message, 0, sizeof message);
    message.msg_iov = parts;
    message.msg_iovlen = 2;
    return sendmsg(fd, &message, 0);
}

void probe_sending(void)
{
    /* No answer that the board takes for one, so that it sends again. */
    unsigned char text[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    struct iovec parts[2] = {{text, 3}, {text + 3, 5}};
    int fd = mailbox(SOCK_DGRAM);
    row("send", send(fd, text, 8, 0));
    row("sendto", sendto(fd, text, 8, 0, NULL, 0));
    row("sendmsg", by_vector(fd, parts));
    row("write", write(fd, text, 8));
    row("writev", writev(fd, parts, 2));
    row("send from nowhere", send(fd, nowhere, 8, 0));
    close(fd);
}
