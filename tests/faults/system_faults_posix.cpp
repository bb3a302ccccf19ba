#include "tests/faults/system_faults_posix.h"

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <thread>
#include <vector>

namespace test::system {
namespace {

struct WatchedCall {
    long number;
    unsigned kind;
};

constexpr WatchedCall kWatched[] = {
    {SYS_openat, kOpen},       {SYS_read, kRead},      {SYS_pread64, kRead},  {SYS_readv, kRead},
    {SYS_write, kWrite},       {SYS_pwrite64, kWrite}, {SYS_writev, kWrite},  {SYS_sendfile, kWrite},
    {SYS_ftruncate, kWrite},   {SYS_fsync, kWrite},    {SYS_close, kClose},   {SYS_renameat, kNames},
    {SYS_renameat2, kNames},   {SYS_unlinkat, kNames}, {SYS_mkdirat, kNames}, {SYS_linkat, kNames},
    {SYS_getdents64, kFolder}, {SYS_newfstatat, kAsk}, {SYS_fstat, kAsk},     {SYS_statx, kAsk},
    {SYS_faccessat, kAsk},
#if defined(SYS_open)  // those of older systems, which younger ones lack
    {SYS_open, kOpen},         {SYS_rename, kNames},   {SYS_unlink, kNames},  {SYS_rmdir, kNames},
    {SYS_mkdir, kNames},       {SYS_link, kNames},     {SYS_stat, kAsk},      {SYS_lstat, kAsk},
    {SYS_access, kAsk},
#endif
};

// The last argument of a call that is let through: none of those above has six.
constexpr std::uint32_t kLetThrough = 0x6f72785f;

Fault plan;
std::atomic<bool> isArmed{false};
std::atomic<long> seen{0};
std::atomic<long> failed{0};

unsigned kindOf(long number) {
    for (const WatchedCall& call : kWatched) {
        if (call.number == number) return call.kind;
    }
    return 0;
}

struct Registers {
    std::array<long, 5> arguments;
    long* answer;
};

Registers registersOf(void* context) {
    auto& machine = static_cast<ucontext_t*>(context)->uc_mcontext;
#if defined(__x86_64__)
    auto& r = machine.gregs;
    return {{r[REG_RDI], r[REG_RSI], r[REG_RDX], r[REG_R10], r[REG_R8]},
            reinterpret_cast<long*>(&r[REG_RAX])};
#elif defined(__aarch64__)
    auto& r = machine.regs;
    const auto at = [&](int i) { return static_cast<long>(r[i]); };
    return {{at(0), at(1), at(2), at(3), at(4)}, reinterpret_cast<long*>(&r[0])};
#endif
}

long make(long number, const std::array<long, 5>& a) {
    const long answer = ::syscall(number, a[0], a[1], a[2], a[3], a[4], static_cast<long>(kLetThrough));
    return answer == -1 ? -errno : answer;
}

// The test's own reports are not meant.
bool isMeant(unsigned kind, const std::array<long, 5>& a) {
    if (!isArmed || (plan.calls & kind) == 0) return false;
    return (kind & (kRead | kWrite | kClose)) == 0 || a[0] > 2;
}

long answer(long number, std::array<long, 5> a) {
    const unsigned kind = kindOf(number);
    if (!isMeant(kind, a)) return make(number, a);
    const long count = seen.fetch_add(1) + 1;
    if (plan.n == 0 || count < plan.n || (count > plan.n && !plan.lasts)) return make(number, a);
    ++failed;
    if (plan.error == 0) {
        const bool isPlain =
            number == SYS_read || number == SYS_write || number == SYS_pread64 || number == SYS_pwrite64;
        if (isPlain && a[2] > 1) a[2] /= 2;
        return make(number, a);
    }
    if (kind == kClose) make(number, a);
    return -plan.error;
}

void onCall(int, siginfo_t* info, void* context) {
    const int kept = errno;
    const Registers registers = registersOf(context);
    *registers.answer = answer(info->si_syscall, registers.arguments);
    errno = kept;
}

std::vector<sock_filter> program() {
    constexpr std::uint32_t kLastArgument = offsetof(seccomp_data, args) + 5 * sizeof(std::uint64_t);
    std::vector<sock_filter> steps{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, kLastArgument),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, kLetThrough, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
    };
    for (const WatchedCall& call : kWatched) {
        if ((call.kind & plan.calls) == 0) continue;
        steps.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(call.number), 0, 1));
        steps.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP));
    }
    steps.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    return steps;
}

bool watchThisThread() {
    struct sigaction action = {};
    action.sa_sigaction = onCall;
    action.sa_flags = SA_SIGINFO | SA_NODEFER | SA_RESTART;
    if (sigaction(SIGSYS, &action, nullptr) != 0 || prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return false;
    std::vector<sock_filter> steps = program();
    sock_fprog filter{static_cast<unsigned short>(steps.size()), steps.data()};
    return ::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, 0, &filter) == 0;
}

}  // namespace

bool canFail() {
#if (defined(__x86_64__) || defined(__aarch64__)) && !defined(__SANITIZE_THREAD__) && \
    !defined(__SANITIZE_ADDRESS__)
    bool can = false;
    std::thread([&] {
        plan = {kOpen, EIO, 0, false};
        can = watchThisThread();
    }).join();
    return can;
#else
    return false;
#endif
}

void runWith(const Fault& fault, const std::function<void()>& work) {
    plan = fault;
    seen = 0;
    failed = 0;
    std::thread([&] {
        if (watchThisThread()) work();
    }).join();
}

long callsSeen() { return seen; }
long callsFailed() { return failed; }

Armed::Armed() { isArmed = true; }
Armed::~Armed() { isArmed = false; }

}  // namespace test::system
