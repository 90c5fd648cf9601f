#include "tools/orblinkctl/commands/doctor.h"

#include <dlfcn.h>
#include <grp.h>
#include <pwd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <memory>
#include <thread>

#include "hwmbox/hwmbox.h"
#include "tools/orblinkctl/access/diagnosis.h"
#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/library.h"
#include "tools/orblinkctl/access/log_lines.h"
#include "tools/orblinkctl/access/record_check.h"
#include "tools/orblinkctl/access/text_safety.h"
#include "tools/orblinkctl/access/unique_descriptor.h"
#include "tools/orblinkctl/output/text.h"

namespace ctl {

namespace {

constexpr int kMailboxFamily = 43;
constexpr char kLibraryNext[] = "install it, or LD_LIBRARY_PATH=ITS-DIRECTORY orblinkctl doctor";

// The findings, in the order in which they were made.
class Findings {
public:
    void Ok(const std::string& subject, const std::string& text) { Add(subject, "ok", text, ""); }
    // What could not be looked at may not be well.
    void Skipped(const std::string& subject, const std::string& text, const std::string& next)
    {
        Add(subject, "not checked", text, next);
        good_ = false;
    }
    void Bad(const std::string& subject, const std::string& text, const std::string& next)
    {
        Add(subject, "bad", text, next);
        good_ = false;
    }

    bool Good() const { return good_; }
    Model Take() { return std::move(list_); }

private:
    void Add(const std::string& subject, const char* state, const std::string& text,
             const std::string& next)
    {
        Model entry;
        entry["subject"] = subject;
        entry["state"] = state;
        entry["text"] = text;
        entry["next"] = next.empty() ? Model() : Model(next);
        list_.push_back(std::move(entry));
    }

    Model list_ = Model::array();
    bool good_ = true;
};

std::string FamilySubject(Family family, const char* what)
{
    return std::string(NamesOf(family).name) + " " + what;
}

std::string Octal(mode_t mode)
{
    char text[16];
    std::snprintf(text, sizeof text, "%04o", static_cast<unsigned>(mode & 07777));
    return text;
}

std::string UserName(uid_t id)
{
    const passwd* entry = getpwuid(id);
    return entry == nullptr ? std::to_string(id) : Printable(entry->pw_name);
}

std::string GroupName(gid_t id)
{
    const ::group* entry = getgrgid(id);
    return entry == nullptr ? std::to_string(id) : Printable(entry->gr_name);
}

// "/dev/shm/x belongs to user root, group net, mode 0660".
std::string OwnerText(const std::string& path, const struct stat& object)
{
    return path + " belongs to user " + UserName(object.st_uid) + ", group " +
           GroupName(object.st_gid) + ", mode " + Octal(object.st_mode);
}

// A group that may use it is joined; else it takes the owner.
std::string WayIn(const struct stat& object)
{
    constexpr mode_t kGroupUses = S_IRGRP | S_IWGRP;
    if ((object.st_mode & kGroupUses) == kGroupUses)
        return "usermod -aG " + GroupName(object.st_gid) + " " + UserName(geteuid()) +
               ", and log in again";
    return "sudo -u " + UserName(object.st_uid) + " orblinkctl doctor";
}

// The library opens the key file and the region for reading and writing. What is not there is the
// matter of others.
bool CheckPermissions(Findings& findings, Family family)
{
    const FamilyNames& names = NamesOf(family);
    const std::string subject = FamilySubject(family, "permissions");
    const std::string region = std::string("/dev/shm") + names.region;
    std::string text;
    for (const std::string& path : {std::string(names.keyFile), region}) {
        struct stat object = {};
        if (stat(path.c_str(), &object) != 0)
            continue;
        text = OwnerText(path, object);
        if (eaccess(path.c_str(), R_OK | W_OK) != 0) {
            findings.Bad(subject, text + ": " + std::strerror(errno), WayIn(object));
            return false;
        }
        if (path == region && (object.st_mode & S_IWOTH) != 0) {
            findings.Bad(subject, text + ": everybody may name the library that is loaded",
                         "chmod o-w " + path);
            return true;
        }
    }
    if (!text.empty())
        findings.Ok(subject, text);
    return true;
}

// A call that is being made at this moment holds the lock rightly.
Diagnosis DiagnoseAtRest(Family family)
{
    constexpr int kLooks = 20;
    Diagnosis found = Diagnose(family);
    for (int look = 1; look < kLooks && found.verdict == Verdict::kBusy; ++look) {
        std::this_thread::sleep_for(std::chrono::milliseconds(25));
        found = Diagnose(family);
    }
    return found;
}

void CheckLock(Findings& findings, Family family, const Diagnosis& found)
{
    const std::string subject = FamilySubject(family, "lock");
    if (!found.state.lock.Exists() || found.verdict == Verdict::kDamaged)
        return;
    if (found.holder == Holder::kNone)
        return findings.Ok(subject, "free");
    if (found.verdict == Verdict::kBusy)
        return findings.Bad(subject, VerdictText(found),
                            "wait, or end it: kill " + std::to_string(found.lastOperator->id));
    findings.Bad(subject, VerdictText(found), NextCommand(found));
}

// False when the records cannot be looked at. A family without devices is what an initialisation
// leaves that was cut off, and what a board has whose devices are all of the other family.
bool CheckInitialisation(Findings& findings, Family family, const Diagnosis& found, bool isOnly)
{
    const std::string subject = FamilySubject(family, "initialisation");
    const std::string region = FamilySubject(family, "region");
    switch (found.verdict) {
        case Verdict::kGood:
            findings.Ok(
                subject,
                "complete, " + std::to_string(found.state.region.devices.value_or(0)) + " found");
            findings.Ok(region,
                        std::to_string(found.state.region.size) + " bytes, as it should be");
            return true;
        case Verdict::kNoDevices:
            if (isOnly)
                findings.Bad(subject, VerdictText(found), NextCommand(found));
            else
                findings.Ok(subject, "complete, the board has none");
            return false;
        case Verdict::kNotInitialised:
        case Verdict::kUnfinished:
            findings.Bad(subject, VerdictText(found), NextCommand(found));
            return false;
        case Verdict::kDamaged:
            findings.Bad(region, VerdictText(found), "orblinkctl recover");
            return false;
        default:
            findings.Skipped(subject, "the lock is held", NextCommand(found));
            return false;
    }
}

bool HasDevices(Family family)
{
    return LookAtRegion(family).devices.value_or(0) != 0;
}

// False when the records cannot be looked at.
bool CheckState(Findings& findings, Family family)
{
    if (!CheckPermissions(findings, family))
        return false;
    const Diagnosis found = DiagnoseAtRest(family);
    CheckLock(findings, family, found);
    const bool isOnly = !HasDevices(family == Family::kPhy ? Family::kSwitch : Family::kPhy);
    return CheckInitialisation(findings, family, found, isOnly);
}

template <typename Record>
void CheckRecord(Findings& findings, const Record& record, const std::string& object,
                 unsigned device, const std::string& mending)
{
    const auto faults = RecordFaults(record, device);
    if (faults.empty())
        return findings.Ok(object + " record", "every value is one that the library writes");
    for (const auto& fault : faults)
        findings.Bad(object + " record", fault, mending);
}

struct LibraryCloser {
    void operator()(void* library) const { dlclose(library); }
};
using LoadedLibrary = std::unique_ptr<void, LibraryCloser>;

template <typename Record>
void CheckHal(Findings& findings, const Record& record, const std::string& object,
              const char* table)
{
    const std::string subject = object + " HAL";
    if (record.bsdValid == 0)
        return findings.Bad(subject, "no board data came for it",
                            "orblinkctl init, with what sends them running");
    const std::string name(NameIn(record.board.halLibName));
    const LoadedLibrary library(name.empty() ? nullptr
                                             : dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL));
    const char* reason = library == nullptr ? dlerror() : nullptr;
    const bool good = library != nullptr && dlsym(library.get(), table) != nullptr;
    if (library != nullptr && !good)
        reason = "it has no table of functions for this family";
    if (good)
        findings.Ok(subject, Printable(name));
    else
        findings.Bad(subject, Printable(name) + ": " + Printable(reason ? reason : "no name"),
                     kLibraryNext);
}

// An operation that reaches the chip, and the lines that it left.
void Report(Findings& findings, const std::string& subject, int result, const char* what)
{
    const std::string line = LineWith("");
    DropHeldLogLines();
    if (result == 0)
        findings.Ok(subject, std::string(what) + " answers");
    else
        findings.Bad(subject,
                     std::string(what) + " does not answer" + (line.empty() ? "" : ": " + line),
                     "check MDIO bus, address and reset line: orblinkctl board");
}

void CheckSwitches(Findings& findings)
{
    const auto region = ReadSwitches();
    for (unsigned device = 0; device < region.NumOfSwitches; ++device) {
        const auto& record = region.device[device];
        const std::string object = SwitchObject(device);
        const std::string number = std::to_string(device);
        CheckRecord(findings, record, object, device,
                    "orblinkctl down " + number + "; orblinkctl up " + number + " --defaults");
        CheckHal(findings, record, object, "OBHAL_HalFuncs");
        const std::string path = object + " data path";
        if (!IsEnabled(record)) {
            findings.Skipped(path, "it is not up", "orblinkctl up " + number);
            continue;
        }
        uint32_t link = 0;
        uint32_t speed = 0;
        uint32_t duplex = 0;
        Enter(Family::kSwitch);
        Report(findings, path,
               ORBLINK_GetPortLink(static_cast<uint8_t>(device), 0, &link, &speed, &duplex),
               "the chip");
    }
}

void CheckPhys(Findings& findings)
{
    const auto region = ReadPhys();
    for (unsigned device = 0; device < region.NumOfPhys; ++device) {
        const auto& record = region.phy[device];
        const std::string object = PhyObject(device);
        const std::string number = std::to_string(device);
        CheckRecord(findings, record, object, device,
                    "orblinkctl phy " + number + " down; orblinkctl phy " + number + " up");
        CheckHal(findings, record, object, "ETHPHY_HalFuncs");
        const std::string path = object + " data path";
        if (record.config.hwState != EP_HW_STATE_ENABLED) {
            findings.Skipped(path, "it is not up", "orblinkctl phy " + number + " up");
            continue;
        }
        uint16_t identifier = 0;
        Enter(Family::kPhy);
        const int result = ETHPHY_ReadMdio(static_cast<uint8_t>(device), 2, &identifier);
        // All ones or zeros is what an empty bus reads.
        Report(findings, path, result != 0 || identifier == 0xFFFF || identifier == 0 ? -1 : 0,
               "the PHY");
    }
}

void CheckMailbox(Findings& findings)
{
    const UniqueDescriptor socket(::socket(kMailboxFamily, SOCK_SUBJECT, 0));
    if (socket)
        findings.Ok("mailbox", "the kernel has the mailbox");
    else
        findings.Bad("mailbox", std::string("the kernel has no mailbox: ") + std::strerror(errno),
                     "load the mailbox driver");
}

template <typename Run>
void Attempt(Findings& findings, const char* subject, Run run)
{
    try {
        run();
    } catch (const Failure& failure) {
        // Without its library not even the records of a family can be read.
        const std::string library = LineWith("dlopen");
        DropHeldLogLines();
        if (library.empty())
            findings.Bad(subject, failure.text, "orblinkctl recover");
        else
            findings.Bad(subject, library, kLibraryNext);
    }
}

}  // namespace

Model Examine(Call& call)
{
    Findings findings;
    CheckMailbox(findings);
    Attempt(findings, "switches", [&] {
        if (CheckState(findings, Family::kSwitch))
            CheckSwitches(findings);
    });
    Attempt(findings, "PHYs", [&] {
        if (CheckState(findings, Family::kPhy))
            CheckPhys(findings);
    });
    if (!findings.Good())
        call.exitCode = kFailed;
    Model model;
    model["checks"] = findings.Take();
    return model;
}

void PrintChecks(const Model& model, std::string& out)
{
    for (const auto& entry : model["checks"]) {
        Paragraph(out,
                  {Text(entry["state"]), ": ", Text(entry["subject"]), ": ", Text(entry["text"])});
        if (!entry["next"].is_null())
            Paragraph(out, {"    next: ", Text(entry["next"])});
    }
}

}  // namespace ctl
