#include "platform/CrashReport.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <elf.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysinfo.h>
#include <ucontext.h>
#include <unistd.h>

#include "core/LogFile.h"
#include "core/Trace.h"

namespace {

// What is learnt before any crash, while every library call is still safe.
struct CrashFacts {
  char programPath[512] = "Unknown";
  char programName[128] = "Unknown";
  char userName[128] = "Unknown";
  long processors = 1;
  long gmtOffset = 0;  // seconds east of UTC
  long desktop[3] = {0, 0, 0};
  int probe[2] = {-1, -1};  // a pipe through which memory is read without faulting
  int testCrash = 0;
};
CrashFacts g_Facts;
std::atomic<bool> g_Reported{false};
alignas(16) char g_AltStack[256 * 1024];  // sanitizer frames are large

constexpr int kSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};
constexpr size_t kStackDumpBytes = 0x2000;

// Text built in a static buffer and written with write(2): no allocation,
// no stdio, no locale.
class CReportOut {
 public:
  explicit CReportOut(int fd) : m_Fd(fd) {}
  ~CReportOut() { Flush(); }
  CReportOut &operator<<(const char *s) {
    while (s && *s) Put(*s++);
    return *this;
  }
  CReportOut &Hex(uint64_t v, int width) {
    char digits[16];
    int n = 0;
    do digits[n++] = "0123456789abcdef"[v & 15]; while ((v >>= 4) && n < 16);
    for (int i = n; i < width; ++i) Put('0');
    while (n) Put(digits[--n]);
    return *this;
  }
  CReportOut &Dec(int64_t v, int width = 0, char pad = '0') {
    char digits[20];
    int n = 0;
    uint64_t u = v < 0 ? 0 - static_cast<uint64_t>(v) : static_cast<uint64_t>(v);
    do digits[n++] = static_cast<char>('0' + u % 10); while ((u /= 10) && n < 20);
    if (v < 0) Put('-');
    for (int i = n + (v < 0); i < width; ++i) Put(pad);
    while (n) Put(digits[--n]);
    return *this;
  }
  // "%4d-%02d-%02d %02d:%02d:%02d" of a Unix time, in local time.
  CReportOut &Date(int64_t unixSeconds) {
    int64_t t = unixSeconds + g_Facts.gmtOffset;
    int64_t days = t / 86400, secs = t % 86400;
    if (secs < 0) secs += 86400, --days;
    // Civil date from a day count (proleptic Gregorian).
    days += 719468;
    const int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const int64_t doe = days - era * 146097;
    const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const int64_t mp = (5 * doy + 2) / 153;
    const int64_t day = doy - (153 * mp + 2) / 5 + 1;
    const int64_t month = mp < 10 ? mp + 3 : mp - 9;
    const int64_t year = yoe + era * 400 + (month <= 2);
    Dec(year, 4) << "-";
    Dec(month, 2) << "-";
    Dec(day, 2) << " ";
    Dec(secs / 3600, 2) << ":";
    Dec(secs / 60 % 60, 2) << ":";
    return Dec(secs % 60, 2);
  }
  void Flush() {
    for (size_t done = 0; done < m_Used;) {
      const ssize_t n = write(m_Fd, m_Buffer + done, m_Used - done);
      if (n <= 0 && errno != EINTR) break;
      if (n > 0) done += static_cast<size_t>(n);
    }
    m_Used = 0;
  }

 private:
  void Put(char c) {
    if (m_Used == sizeof(m_Buffer)) Flush();
    m_Buffer[m_Used++] = c;
  }
  int m_Fd;
  size_t m_Used = 0;
  char m_Buffer[4096];
};

// Copies memory that may not be mapped: the kernel, not the processor,
// touches it. Raw system calls, so that no sanitizer looks at the address.
bool ReadMemory(uintptr_t address, void *out, size_t size) {
  if (g_Facts.probe[0] < 0 || size > 4096) return false;
  const long written = syscall(SYS_write, g_Facts.probe[1], address, size);
  if (written <= 0) return false;
  const long got = syscall(SYS_read, g_Facts.probe[0], out, static_cast<size_t>(written));
  return written == static_cast<long>(size) && got == written;
}

struct Mapping {
  uintptr_t start = 0, end = 0, offset = 0;
  const char *path = "";  // valid during the callback only
};

uintptr_t ParseHex(const char *&p) {
  uintptr_t v = 0;
  for (;; ++p) {
    const char c = *p;
    if (c >= '0' && c <= '9') v = v * 16 + static_cast<uintptr_t>(c - '0');
    else if (c >= 'a' && c <= 'f') v = v * 16 + static_cast<uintptr_t>(c - 'a' + 10);
    else return v;
  }
}

// Calls `visit(mapping)` for each line of /proc/self/maps until it returns false.
template <class Visit>
void ForEachMapping(Visit visit) {
  static char buffer[8192];
  const int fd = open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
  if (fd < 0) return;
  size_t used = 0;
  for (bool more = true; more;) {
    const ssize_t n = read(fd, buffer + used, sizeof(buffer) - 1 - used);
    if (n <= 0) more = false;
    else used += static_cast<size_t>(n);
    buffer[used] = 0;
    char *line = buffer;
    for (char *nl; (nl = strchr(line, '\n')) || (!more && *line); line = nl ? nl + 1 : line + strlen(line)) {
      if (nl) *nl = 0;
      // "start-end perms offset dev inode   path"
      const char *p = line;
      Mapping m;
      m.start = ParseHex(p);
      m.end = ParseHex(++p);
      for (int field = 0; field < 2 && *p; ++p) field += *p == ' ';
      m.offset = ParseHex(p);
      for (int field = 0; field < 3 && *p; ++p) field += *p == ' ';
      while (*p == ' ') ++p;
      m.path = p;
      if (!visit(m)) {
        close(fd);
        return;
      }
      if (!nl) break;
    }
    used = static_cast<size_t>(buffer + used - line);
    memmove(buffer, line, used);
    if (used == sizeof(buffer) - 1) used = 0;  // a line longer than the buffer is dropped
  }
  close(fd);
}

// Copies what fits and terminates; usable in the handler.
template <size_t N>
void CopyText(char (&to)[N], const char *from) {
  size_t i = 0;
  for (; i + 1 < N && from[i]; ++i) to[i] = from[i];
  to[i] = 0;
}

const char *BaseName(const char *path) {
  const char *slash = strrchr(path, '/');
  return slash ? slash + 1 : path;
}

// The name of the signal as the report names faults.
const char *ExceptionName(int signal, int code, uintptr_t address, uintptr_t stackPointer) {
  switch (signal) {
    case SIGSEGV:
      // A fault just below the stack pointer is the stack running out.
      if (address < stackPointer + 4096 && address + 65536 > stackPointer) return "a Stack Overflow";
      return "an Access Violation";
    case SIGBUS: return code == BUS_ADRALN ? "a Datatype Misalignment" : "an In Page Error";
    case SIGILL:
      return code == ILL_PRVOPC || code == ILL_PRVREG ? "a Privileged Instruction" : "an Illegal Instruction";
    case SIGABRT: return "a Noncontinuable Exception";
    case SIGFPE:
      switch (code) {
        case FPE_INTDIV: return "an Integer Divide by Zero";
        case FPE_INTOVF: return "an Integer Overflow";
        case FPE_FLTDIV: return "a Float Divide by Zero";
        case FPE_FLTOVF: return "a Float Overflow";
        case FPE_FLTUND: return "a Float Underflow";
        case FPE_FLTRES: return "a Float Inexact Result";
        case FPE_FLTINV: return "a Float Invalid Operation";
        case FPE_FLTSUB: return "a Array Bounds Exceeded";
        default: return "Unknown exception type";
      }
    default: return "Unknown exception type";
  }
}

struct Machine {
  uintptr_t pc = 0, sp = 0, cs = 0;
  bool write = false;
};

Machine ReadMachine(const void *context) {
  Machine m;
#if defined(__x86_64__)
  const auto &g = static_cast<const ucontext_t *>(context)->uc_mcontext.gregs;
  m.pc = static_cast<uintptr_t>(g[REG_RIP]);
  m.sp = static_cast<uintptr_t>(g[REG_RSP]);
  m.cs = static_cast<uintptr_t>(g[REG_CSGSFS]) & 0xffff;
  m.write = (g[REG_ERR] & 2) != 0;  // page fault error code: the access was a write
#else
  (void)context;
#endif
  return m;
}

void WriteRegisters(CReportOut &out, const void *context) {
  out << "Registers:\n";
#if defined(__x86_64__)
  const auto &g = static_cast<const ucontext_t *>(context)->uc_mcontext.gregs;
  struct Reg {
    const char *name;
    int index;
  };
  static const Reg regs[] = {{"RAX", REG_RAX}, {"RBX", REG_RBX}, {"RCX", REG_RCX}, {"RDX", REG_RDX},
                             {"RSI", REG_RSI}, {"RDI", REG_RDI}, {"RBP", REG_RBP}, {"RSP", REG_RSP},
                             {"R8 ", REG_R8},  {"R9 ", REG_R9},  {"R10", REG_R10}, {"R11", REG_R11},
                             {"R12", REG_R12}, {"R13", REG_R13}, {"R14", REG_R14}, {"R15", REG_R15}};
  for (size_t i = 0; i < sizeof(regs) / sizeof(regs[0]); ++i) {
    out << regs[i].name << "=";
    out.Hex(static_cast<uint64_t>(g[regs[i].index]), 16) << (i % 4 == 3 ? "\n" : " ");
  }
  const auto segments = static_cast<uint64_t>(g[REG_CSGSFS]);  // cs, gs, fs, 16 bits each
  out << "RIP=", out.Hex(static_cast<uint64_t>(g[REG_RIP]), 16) << " EFLGS=";
  out.Hex(static_cast<uint64_t>(g[REG_EFL]), 8) << " CS=";
  out.Hex(segments & 0xffff, 4) << " GS=";
  out.Hex(segments >> 16 & 0xffff, 4) << " FS=";
  out.Hex(segments >> 32 & 0xffff, 4) << "\n";
#else
  (void)context;
  out << "(not recorded on this processor)\n";
#endif
}

// The first four bytes of the build identifier of the ELF object mapped at
// `base`: what tells one build of a module from another.
uint32_t BuildStamp(uintptr_t base) {
  Elf64_Ehdr header;
  if (!ReadMemory(base, &header, sizeof(header)) || header.e_phnum > 64) return 0;
  Elf64_Phdr phdrs[64];
  if (!ReadMemory(base + header.e_phoff, phdrs, sizeof(Elf64_Phdr) * header.e_phnum)) return 0;
  uintptr_t bias = base;
  for (int i = 0; i < header.e_phnum; ++i)
    if (phdrs[i].p_type == PT_LOAD && phdrs[i].p_offset == 0) {
      bias = base - phdrs[i].p_vaddr;
      break;
    }
  for (int i = 0; i < header.e_phnum; ++i) {
    if (phdrs[i].p_type != PT_NOTE) continue;
    for (uintptr_t at = bias + phdrs[i].p_vaddr, end = at + phdrs[i].p_memsz; at + sizeof(Elf64_Nhdr) <= end;) {
      Elf64_Nhdr note;
      if (!ReadMemory(at, &note, sizeof(note))) break;
      const uintptr_t desc = at + sizeof(note) + ((note.n_namesz + 3) & ~3u);
      unsigned char id[4];
      if (note.n_type == NT_GNU_BUILD_ID && note.n_descsz >= 4 && ReadMemory(desc, id, 4))
        return uint32_t{id[0]} << 24 | uint32_t{id[1]} << 16 | uint32_t{id[2]} << 8 | id[3];
      at = desc + ((note.n_descsz + 3) & ~3u);
    }
  }
  return 0;
}

// A shared library carries its version in its file name ("libz.so.1.2.13");
// a program has none.
void WriteVersion(CReportOut &out, const char *path) {
  const char *p = strstr(BaseName(path), ".so.");
  if (!p) return;
  int64_t parts[4] = {0, 0, 0, 0};
  p += 4;
  for (int i = 0; i < 4 && *p >= '0' && *p <= '9'; ++i, p += *p == '.')
    while (*p >= '0' && *p <= '9') parts[i] = parts[i] * 10 + (*p++ - '0');
  out << "v", out.Dec(parts[0]) << ".", out.Dec(parts[1]) << ".", out.Dec(parts[2]) << ".", out.Dec(parts[3]);
}

void WriteModules(CReportOut &out) {
  out << "\nModule list: names, addresses, sizes, time stamps and file times:\n";
  uintptr_t last = 0;
  ForEachMapping([&](const Mapping &m) {
    static const unsigned char elf[4] = {0x7f, 'E', 'L', 'F'};
    unsigned char magic[4];
    if (m.offset != 0 || m.path[0] != '/' || (last && m.start <= last)) return true;
    if (!ReadMemory(m.start, magic, 4) || memcmp(magic, elf, 4) != 0) return true;
    last = m.start;
    struct stat st = {};
    const bool known = stat(m.path, &st) == 0;
    out << m.path << ",\tloaded at 0x";
    out.Hex(m.start, 8) << " - ";
    out.Dec(known ? st.st_size : 0, 7, ' ') << " bytes - ";
    out.Hex(BuildStamp(m.start), 8);
    if (known) out << " - file date is ", out.Date(st.st_mtime);
    out << " ";
    WriteVersion(out, m.path);
    out << "\n";
    return true;
  });
}

void WriteStackDump(CReportOut &out, uintptr_t sp) {
  out << "\nStack dump:\n";
  uintptr_t top = sp + kStackDumpBytes;
  ForEachMapping([&](const Mapping &m) {
    if (sp < m.start || sp >= m.end) return true;
    if (m.end < top) top = m.end;
    return false;
  });
  for (uintptr_t at = sp & ~uintptr_t{7}; at < top; at += 8) {
    uint64_t word;
    if (!ReadMemory(at, &word, sizeof(word))) {
      out << "Exception encountered during stack dump.\n";
      return;
    }
    const int column = static_cast<int>((at - (sp & ~uintptr_t{7})) / 8 % 8);
    if (column == 0) out.Hex(at, 8) << ": ";
    out.Hex(word, 16) << (column == 7 || at + 8 >= top ? "\n" : " ");
  }
}

void Fault() {
  // An address in the never-mapped first page: a read there faults on any
  // build, and the sanitizers have no view on it.
  volatile uintptr_t address = 16;
  (void)*reinterpret_cast<volatile int *>(address);
}

void OnCrashSignal(int signal, siginfo_t *info, void *context) {
  WriteCrashReport(signal, info, context);
  // The signal goes on: its default action ends the process (and dumps core
  // where the system keeps them).
  struct sigaction dfl = {};
  dfl.sa_handler = SIG_DFL;
  sigemptyset(&dfl.sa_mask);
  sigaction(signal, &dfl, nullptr);
  raise(signal);
}

}  // namespace

void InstallCrashHandler() {
  const ssize_t n = readlink("/proc/self/exe", g_Facts.programPath, sizeof(g_Facts.programPath) - 1);
  if (n > 0) {
    g_Facts.programPath[n] = 0;
    CopyText(g_Facts.programName, BaseName(g_Facts.programPath));
    if (char *dot = strrchr(g_Facts.programName, '.')) *dot = 0;
  }
  struct passwd pw, *found = nullptr;
  char pwBuffer[1024];
  if (getpwuid_r(getuid(), &pw, pwBuffer, sizeof(pwBuffer), &found) == 0 && found)
    CopyText(g_Facts.userName, pw.pw_name);
  g_Facts.processors = sysconf(_SC_NPROCESSORS_ONLN);
  const time_t now = time(nullptr);
  struct tm local;
  if (localtime_r(&now, &local)) g_Facts.gmtOffset = local.tm_gmtoff;
  if (g_Facts.probe[0] < 0 && pipe2(g_Facts.probe, O_CLOEXEC) != 0) g_Facts.probe[0] = -1;
  const char *test = getenv("VELMOR_TEST_CRASH");
  g_Facts.testCrash = test ? atoi(test) : 0;

  stack_t stack = {};
  stack.ss_sp = g_AltStack;
  stack.ss_size = sizeof(g_AltStack);
  sigaltstack(&stack, nullptr);
  struct sigaction sa = {};
  sa.sa_sigaction = OnCrashSignal;
  // No deferral: a fault inside the report comes back here, where the
  // first-call guard lets it end the process.
  sa.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
  sigemptyset(&sa.sa_mask);
  for (int s : kSignals) sigaction(s, &sa, nullptr);
}

void SetCrashReportDesktop(long width, long height, long bitsPerPixel) {
  g_Facts.desktop[0] = width;
  g_Facts.desktop[1] = height;
  g_Facts.desktop[2] = bitsPerPixel;
}

int WriteCrashReport(int signal, siginfo_t *info, void *context) {
  if (g_Reported.exchange(true)) return 0;
  const int lastError = errno;
  const char *path = GetLogPath();
  const int fd = path[0] ? open(path, O_WRONLY | O_APPEND | O_CREAT | O_SYNC | O_CLOEXEC, 0644) : -1;
  if (fd < 0) {
    static const char text[] = "Error creating exception report\n";
    (void)!write(2, text, sizeof(text) - 1);
    return 0;
  }
  const Machine machine = context ? ReadMachine(context) : Machine{};
  const uintptr_t address = info ? reinterpret_cast<uintptr_t>(info->si_addr) : 0;
  {
    CReportOut out(fd);
    struct timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    out << "\n-------------------------- EXCEPTION at ", out.Date(now.tv_sec) << "--------------------------\n";

    const char *module = "Unknown";
    ForEachMapping([&](const Mapping &m) {
      if (machine.pc < m.start || machine.pc >= m.end) return true;
      if (m.path[0] == '/') {
        static char name[256];
        CopyText(name, BaseName(m.path));
        module = name;
      }
      return false;
    });
    out << g_Facts.programName << " caused "
        << ExceptionName(signal, info ? info->si_code : 0, address, machine.sp) << " in module " << module << " at ";
    out.Hex(machine.cs, 4) << ":", out.Hex(machine.pc, 8) << ".\n";
    // The upload thread is the only other one.
    out << "Exception handler called in " << (syscall(SYS_gettid) == getpid() ? "main thread" : "another thread")
        << ".\n";

    struct sysinfo mem = {};
    sysinfo(&mem);
    const uint64_t unit = mem.mem_unit ? mem.mem_unit : 1, mb = 1 << 20;
    out << g_Facts.programPath << ", run by " << g_Facts.userName << ".\n";
    out.Dec(g_Facts.processors) << " processor(s), type ";
#if defined(__x86_64__)
    out.Dec(EM_X86_64);
#elif defined(__aarch64__)
    out.Dec(EM_AARCH64);
#else
    out.Dec(0);
#endif
    out << " with ", out.Dec(static_cast<int64_t>((mem.freeram * unit + mb - 1) / mb)) << "/";
    out.Dec(static_cast<int64_t>((mem.totalram * unit + mb - 1) / mb)) << " MB of free memory\n";
    out << "Desktop resolution : ", out.Dec(g_Facts.desktop[0]) << "x";
    out.Dec(g_Facts.desktop[1]) << "x", out.Dec(g_Facts.desktop[2]) << "\n";
    const char *errorText = strerrordesc_np(lastError);
    out << "Last windows error : " << (errorText ? errorText : "Unknown") << "\n";

    if (Trace::g_Depth > 0) {
      out << "Callstack: Depth ", out.Dec(Trace::g_Depth) << "\n";
      for (int i = 0; i < Trace::g_Depth; ++i) out << Trace::g_Names[i] << (i + 1 < Trace::g_Depth ? " -> " : "\n");
    }
    out.Flush();
    if (g_Facts.testCrash == 2) Fault();

    if (signal == SIGSEGV && info && info->si_code > 0) {
      out << (machine.write ? "Write to" : "Read from") << " location ", out.Hex(address, 8)
          << " caused an access violation.\n";
    }
    WriteRegisters(out, context);

    out << "Bytes at CS:EIP:\n";
    for (uintptr_t i = 0; i < 16; ++i) {
      unsigned char byte;
      if (machine.pc && ReadMemory(machine.pc + i, &byte, 1)) out.Hex(byte, 2) << " ";
      else out << "?? ";
    }
    out << "\n";
    if (machine.sp) WriteStackDump(out, machine.sp);
    WriteModules(out);
    out << "----------------------------- EXCEPTION END -----------------------------\n";
  }
  close(fd);
  return 0;
}

void CrashIfTesting() {
  if (g_Facts.testCrash) Fault();
}
