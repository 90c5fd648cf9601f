#include <errno.h>
#include <fcntl.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include "probe.h"

#define RESET "/sys/devices/pci0000:00/0000:00:0d.0/VQR351B:01/sgmii1_reset"
#define STATE "/sys/bus/acpi/drivers/Kova ACPI driver/VQR34DB:00/system_state"
#define LANE "/dev/modphy_drv"

static void probe_reading(void)
{
    char text[16] = "";
    int value = -1;
    FILE* file;
    const int fd = open(RESET, O_RDONLY);
    row("read of an attribute", read(fd, text, sizeof text));
    row("what it holds", text[0]);
    row("read at its end", read(fd, text, sizeof text));
    row("write where it is read", write(fd, "1", 1));
    close(fd);
    file = fopen(STATE, "r");
    row("scan of an attribute", file != NULL ? fscanf(file, "%d", &value) : -1);
    row("its value", value);
    fclose(file);
    row("state is not for writing", open(STATE, O_WRONLY));
}

static void probe_writing(void)
{
    char text[80];
    struct iovec parts[2] = {{"1", 1}, {"\n", 1}};
    int fd = open(RESET, O_WRONLY | O_CREAT | O_TRUNC, 0644);
    int copy;
    memset(text, '1', sizeof text);
    row("write 0", write(fd, "0", 1));
    row("write 1 with a newline", write(fd, "1\n", 2));
    row("write 7", write(fd, "7", 1));
    row("write a word", write(fd, "released\n", 9));
    row("write too much", write(fd, text, sizeof text));
    row("writev", writev(fd, parts, 2));
    row("pwrite", pwrite(fd, "1", 1, 0));
    row("write from nowhere", write(fd, nowhere, 1));
    row("read where it is written", read(fd, text, 1));
    copy = dup2(fd, 9);
    close(fd);
    row("write 7 to a duplicate", write(copy, "7", 1));
    row("write 0 to a duplicate", write(copy, "0", 1));
    close(copy);
    fd = open(RESET, O_RDWR);
    row("read for reading and writing", read(fd, text, 1) == 1 ? text[0] : -1);
    row("write for reading and writing", write(fd, "1", 1));
    close(fd);
}

static void probe_stream(const char* name, const char* text)
{
    FILE* file = fopen(RESET, "w");
    if (file != NULL)
        fputs(text, file);
    row(name, file != NULL ? fflush(file) : -1);
    if (file != NULL)
        fclose(file);
}

static void probe_asking(void)
{
    struct stat facts;
    const int directory = open("/dev", O_RDONLY | O_DIRECTORY);
    int fd;
    row("stat", stat(RESET, &facts));
    row("its mode", facts.st_mode);
    row("its size", (long)facts.st_size);
    row("stat of the state", stat(STATE, &facts));
    row("mode of the state", facts.st_mode);
    row("lstat", lstat(LANE, &facts));
    row("character device", S_ISCHR(facts.st_mode));
    row("fstatat", fstatat(directory, "modphy_drv", &facts, 0));
    row("access", access(RESET, R_OK | W_OK));
    row("access, executable", access(RESET, X_OK));
    row("access, state for writing", access(STATE, W_OK));
    row("faccessat", faccessat(directory, "./modphy_drv", F_OK, 0));
    row("access beside it", access(RESET "s", F_OK));
    fd = openat(directory, "modphy_drv", O_RDONLY);
    row("openat", fd >= 0 ? 0 : -1);
    close(fd);
    row("open, to be made anew", open(RESET, O_WRONLY | O_CREAT | O_EXCL, 0600));
    row("open as a directory", open(RESET, O_RDONLY | O_DIRECTORY));
    fd = open(LANE, O_RDONLY | O_CLOEXEC);
    row("close-on-exec of a file", fcntl(fd, F_GETFD));
    close(fd);
    close(directory);
}

static void probe_lane(void)
{
    const int fd = open(LANE, O_RDWR);
    const int other = open("/dev/null", O_RDWR);
    uint32_t client = 5;
    row("lane reset", ioctl(fd, 0x4004BE05UL, &client));
    client = 9;
    row("lane reset of nobody", ioctl(fd, 0x4004BE05UL, &client));
    row("lane reset from nowhere", ioctl(fd, 0x4004BE05UL, nowhere));
    row("another request", ioctl(fd, 0x4004BE06UL, &client));
    row("lane reset of another file", ioctl(other, 0x4004BE05UL, &client));
    close(other);
    close(fd);
}

void probe_files(void)
{
    probe_reading();
    probe_writing();
    probe_stream("stream of 0", "0");
    probe_stream("stream of 1", "1\n");
    probe_stream("stream of 7", "7");
    probe_asking();
    probe_lane();
}
