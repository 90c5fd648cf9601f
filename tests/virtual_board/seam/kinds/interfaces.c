#include <errno.h>
#include <fcntl.h>
#include <net/if.h>
#include <pthread.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "probe.h"

enum { kReadMii = 0x8948, kWriteMii = 0x8949, kFindPhy = 0x8947, kReconfigure = 0x89F0 };

/* The request of both ABIs, as the C library has it. */
static struct ifreq request_of(const char* name)
{
    struct ifreq request;
    memset(&request, 0, sizeof request);
    memcpy(request.ifr_name, name, strlen(name));
    return request;
}

static long mii(int fd, unsigned long what, const char* name, uint16_t reg, uint16_t value)
{
    struct ifreq request = request_of(name);
    uint16_t words[5] = {16, reg, value, 0, 0};
    memcpy(&request.ifr_ifru, words, sizeof words);
    if (ioctl(fd, what, &request) != 0)
        return -1;
    memcpy(words, &request.ifr_ifru, sizeof words);
    return what == kFindPhy ? words[0] : words[3];
}

static void* in_a_thread(void* fd)
{
    return (void*)mii(*(int*)fd, kReadMii, "nsgmii0", 0, 0);
}

static void probe_threads(int fd)
{
    pthread_t threads[4];
    long right = 0;
    for (int i = 0; i < 4; ++i)
        pthread_create(&threads[i], NULL, in_a_thread, &fd);
    for (int i = 0; i < 4; ++i) {
        void* value = NULL;
        pthread_join(threads[i], &value);
        right += (long)value == 0x5608;
    }
    row("MII reads in threads", right);
}

static void probe_driver(int fd)
{
    struct {
        char name[16];
        uint32_t command, speed, duplex;
        int32_t result;
    } wanted = {"nsgmii1", 55, 4, 1, 77};
    struct ifreq request = request_of("nsgmii1");
    request.ifr_data = (char*)&wanted;
    row("driver request", ioctl(fd, kReconfigure, &request));
    row("its result", wanted.result);
    wanted.command = 54;
    row("another command", ioctl(fd, kReconfigure, &request));
    request.ifr_data = NULL;
    row("driver request without data", ioctl(fd, kReconfigure, &request));
}

/* The C library asks rtnetlink for it. */
static void probe_list(void)
{
    struct if_nameindex* const all = if_nameindex();
    long ours = 0, loopback = 0;
    for (struct if_nameindex* one = all; one != NULL && one->if_index != 0; ++one) {
        ours += strncmp(one->if_name, "nsgmii", 6) == 0;
        loopback += strcmp(one->if_name, "lo") == 0;
    }
    row("among all interfaces", ours);
    row("the machine's own are there as well", loopback);
    if_freenameindex(all);
}

static void probe_flags(int fd)
{
    struct ifreq request = request_of("nsgmii0");
    char name[IF_NAMESIZE] = "";
    row("get flags", ioctl(fd, SIOCGIFFLAGS, &request));
    row("up", request.ifr_flags & IFF_UP);
    request.ifr_flags &= (short)~IFF_UP;
    row("set flags", ioctl(fd, SIOCSIFFLAGS, &request));
    ioctl(fd, SIOCGIFFLAGS, &request);
    row("up afterwards", request.ifr_flags & IFF_UP);
    request.ifr_flags |= IFF_UP;
    ioctl(fd, SIOCSIFFLAGS, &request);
    row("index and back",
        if_indextoname(if_nametoindex("nsgmii0"), name) != NULL && strcmp(name, "nsgmii0") == 0);
    probe_list();
    request = request_of("nsgmii1");
    row("get MTU", ioctl(fd, SIOCGIFMTU, &request));
    row("MTU", request.ifr_mtu);
    row("get address", ioctl(fd, SIOCGIFADDR, &request));
}

void probe_interfaces(void)
{
    const int fd = socket(AF_INET, SOCK_DGRAM, 0);
    const int file = open("/dev/null", O_RDWR);
    row("MII read", mii(fd, kReadMii, "nsgmii0", 0, 0));
    row("MII write", mii(fd, kWriteMii, "nsgmii0", 4, 0x55) >= 0 ? 0 : -1);
    row("MII read back", mii(fd, kReadMii, "nsgmii1", 4, 0));
    row("MII address", mii(fd, kFindPhy, "nsgmii0", 0, 0));
    row("MII read of a register that there is not", mii(fd, kReadMii, "nsgmii0", 32, 0));
    row("MII read of an interface that there is not", mii(fd, kReadMii, "nsgmii2", 0, 0));
    row("MII read from a file", mii(file, kReadMii, "nsgmii0", 0, 0));
    row("MII read from nothing", mii(987, kReadMii, "nsgmii0", 0, 0));
    row("MII read to nowhere", ioctl(fd, kReadMii, nowhere));
    probe_threads(fd);
    probe_driver(fd);
    probe_flags(fd);
    close(file);
    close(fd);
}
