// Faults for a process, loaded in front of the C library (LD_PRELOAD): calls on files below a folder fail,
// move less than asked for, find the disk full, or are the last thing that the process does.
//
//   VELTRAC_FAULT_DIR     the folder, absolute
//   VELTRAC_FAULT         "<call> <n> <what>": the n-th (from 1) of the calls open, read, write, sync,
//   rename,
//                         remove, reserve, copy, lock, any or alloc (of more than 64 KiB) …
//                           an errno          … fails with it, alone
//                           from:<errno>      … and all later ones fail with it
//                           short             … moves half of what it should
//                           tear, kill        … ends the process, after half of it or before it
//                         "full <bytes> <errno>": no more than so many bytes can be written below the folder
//   VELTRAC_FAULT_COUNTS  a file that gets the number of calls of each kind, and the bytes written, at the
//   end VELTRAC_FAULT_RECORD  a file that gets every change of the folder in its order (see Replay.cpp)
//
//   VELTRAC_FAULT_NOW     where the clock stands, so that two runs of a job make the same bytes
//
// Allocations count from faultsArmed(1) to faultsArmed(0) where a program calls it, else all of its life.
#define _GNU_SOURCE
#undef _FORTIFY_SOURCE  // whose headers define inline what is defined here
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <time.h>
#include <unistd.h>

enum call { kOpen, kRead, kWrite, kSync, kRename, kRemove, kReserve, kCopy, kLock, kAlloc, kCalls };
static const char* const kNames[kCalls + 1] = {"open",    "read", "write", "sync",  "rename", "remove",
                                               "reserve", "copy", "lock",  "alloc", "any"};
enum what { kError, kShort, kTear, kKill };

static char folder[PATH_MAX];
static size_t folderLength;
static int faultCall = -1;
static long faultAt;
static enum what faultWhat;
static int faultErrno;
static int faultStays;
static long long room = -1;  // bytes that the disk still takes; negative: as many as it has
static int record = -1;
static atomic_long counts[kCalls + 1];
static atomic_llong written;
static atomic_int armed = 1;

void faultsArmed(int on)
{
    armed = on;
}

static void setUp(void)
{
    const char* const at = getenv("VELTRAC_FAULT_DIR");
    if (folderLength != 0 || at == NULL)
        return;
    folderLength = strlen(strncpy(folder, at, sizeof folder - 1));
    const char* const log = getenv("VELTRAC_FAULT_RECORD");
    if (log != NULL)
        record = (int)syscall(SYS_openat, AT_FDCWD, log, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    const char* const fault = getenv("VELTRAC_FAULT");
    char call[16];
    char what[32];
    if (fault == NULL || sscanf(fault, "%15s %ld %31s", call, &faultAt, what) != 3)
        return;
    if (strcmp(call, "full") == 0) {
        room = faultAt;
        faultErrno = atoi(what);
        return;
    }
    faultStays = strncmp(what, "from:", 5) == 0;
    faultWhat = strcmp(what, "short") == 0  ? kShort
                : strcmp(what, "tear") == 0 ? kTear
                : strcmp(what, "kill") == 0 ? kKill
                                            : kError;
    faultErrno = atoi(faultStays ? what + 5 : what);
    for (int i = 0; i <= kCalls; ++i)
        if (strcmp(call, kNames[i]) == 0)
            faultCall = i;
}

__attribute__((constructor)) static void start(void)
{
    setUp();
}

__attribute__((destructor)) static void tellCounts(void)
{
    const char* const to = getenv("VELTRAC_FAULT_COUNTS");
    const int fd =
        to == NULL ? -1 : (int)syscall(SYS_openat, AT_FDCWD, to, O_WRONLY | O_CREAT | O_TRUNC, 0666);
    for (int i = 0; fd >= 0 && i <= kCalls; ++i)
        dprintf(fd, "%s %ld\n", kNames[i], atomic_load(&counts[i]));
    if (fd >= 0)
        dprintf(fd, "bytes %lld\n", (long long)atomic_load(&written));
}

static int isBelow(const char* path)
{
    return folderLength != 0 && strncmp(path, folder, folderLength) == 0 && path[folderLength] == '/';
}

// The path as it stands from the root; links are not followed.
static const char* absolute(const char* path, char* room_)
{
    if (path[0] == '/' || getcwd(room_, PATH_MAX) == NULL)
        return path;
    const size_t length = strlen(room_);
    snprintf(room_ + length, PATH_MAX - length, "/%s", path);
    return room_;
}

static int isPathBelow(const char* path)
{
    char full[2 * PATH_MAX];
    const int before = errno;
    const int below = folderLength != 0 && path != NULL &&
                      (isBelow(absolute(path, full)) || (path[0] != '/' && strcmp(full, folder) == 0));
    errno = before;
    return below;
}

static int isFileBelow(int fd)
{
    char link[64];
    char path[PATH_MAX];
    if (folderLength == 0 || fd < 0)
        return 0;
    const int before = errno;
    snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
    const ssize_t length = readlink(link, path, sizeof path - 1);
    errno = before;
    if (length <= 0)
        return 0;
    path[length] = '\0';
    return isBelow(path) || strcmp(path, folder) == 0;
}

static void die(void)
{
    syscall(SYS_kill, getpid(), SIGKILL);
}

enum verdict { kGo, kFail, kHalf, kHalfAndDie };

// Counts a call and says what becomes of it.
static enum verdict judge(enum call call)
{
    const long own = atomic_fetch_add(&counts[call], 1) + 1;
    const long all = call == kAlloc ? 0 : atomic_fetch_add(&counts[kCalls], 1) + 1;
    const long n = faultCall == (int)call ? own : faultCall == kCalls ? all : 0;
    if (n == 0 || (faultStays ? n < faultAt : n != faultAt))
        return kGo;
    if (faultWhat == kKill)
        die();
    if (faultWhat == kError)
        errno = faultErrno;
    return faultWhat == kError ? kFail : faultWhat == kShort ? kHalf : kHalfAndDie;
}

// -- The record: a letter, two inode numbers or lengths, and bytes --

struct entry
{
    char kind;
    char pad[7];
    uint64_t inode;
    uint64_t offset;
    uint64_t length;
};

static void note(char kind, uint64_t inode, uint64_t offset, const void* bytes, size_t length)
{
    if (record < 0)
        return;
    const struct entry head = {kind, {0}, inode, offset, length};
    const struct iovec parts[2] = {{(void*)&head, sizeof head}, {(void*)bytes, length}};
    syscall(SYS_writev, record, parts, 2);
}

static uint64_t inodeOf(int fd)
{
    struct stat found = {0};
    fstat(fd, &found);
    return found.st_ino;
}

// -- Transfers --

typedef ssize_t (*transfer)(int fd, void* bytes, size_t count, off64_t at);

static ssize_t rawRead(int fd, void* bytes, size_t count, off64_t at)
{
    return at < 0 ? syscall(SYS_read, fd, bytes, count) : syscall(SYS_pread64, fd, bytes, count, at);
}

static ssize_t rawWrite(int fd, void* bytes, size_t count, off64_t at)
{
    const off64_t offset = at < 0 && record >= 0 ? lseek64(fd, 0, SEEK_CUR) : at;
    const ssize_t done =
        at < 0 ? syscall(SYS_write, fd, bytes, count) : syscall(SYS_pwrite64, fd, bytes, count, at);
    if (done > 0)
        note('w', inodeOf(fd), (uint64_t)offset, bytes, (size_t)done);
    return done;
}

static ssize_t move(enum call call, transfer raw, int fd, void* bytes, size_t count, off64_t at)
{
    if (!isFileBelow(fd))
        return raw(fd, bytes, count, at);
    const enum verdict verdict = judge(call);
    if (verdict == kFail)
        return -1;
    enum { kPart = 512 };  // what the system moves whole
    if (verdict == kHalfAndDie)
        count = count / 2 / kPart * kPart;
    else if (verdict == kHalf)
        count = (count + 1) / 2;
    // Room is needed where the file grows.
    struct stat now = {0};
    fstat(fd, &now);
    const long long from = at < 0 ? lseek64(fd, 0, SEEK_CUR) : at;
    const long long fresh = from + (long long)count - now.st_size;
    if (call == kWrite && room >= 0 && fresh > 0) {
        const long long left = room - atomic_load(&written) + (long long)count - fresh;
        if (left <= 0) {
            errno = faultErrno;
            return -1;
        }
        count = (long long)count < left ? count : (size_t)left;
    }
    const ssize_t done = raw(fd, bytes, count, at);
    if (call == kWrite && from + done > now.st_size)
        atomic_fetch_add(&written, from + done - (from < now.st_size ? now.st_size : from));
    if (verdict == kHalfAndDie)
        die();
    return done;
}

ssize_t read(int fd, void* bytes, size_t count)
{
    return move(kRead, rawRead, fd, bytes, count, -1);
}
ssize_t pread(int fd, void* bytes, size_t count, off_t at)
{
    return move(kRead, rawRead, fd, bytes, count, at);
}
ssize_t pread64(int fd, void* bytes, size_t count, off64_t at)
{
    return move(kRead, rawRead, fd, bytes, count, at);
}
ssize_t write(int fd, const void* bytes, size_t count)
{
    return move(kWrite, rawWrite, fd, (void*)bytes, count, -1);
}
ssize_t pwrite(int fd, const void* bytes, size_t count, off_t at)
{
    return move(kWrite, rawWrite, fd, (void*)bytes, count, at);
}
ssize_t pwrite64(int fd, const void* bytes, size_t count, off64_t at)
{
    return move(kWrite, rawWrite, fd, (void*)bytes, count, at);
}

static ssize_t moveParts(enum call call, transfer raw, int fd, const struct iovec* parts, int n)
{
    ssize_t all = 0;
    for (int i = 0; i < n; ++i) {
        const ssize_t done = move(call, raw, fd, parts[i].iov_base, parts[i].iov_len, -1);
        if (done < 0)
            return all > 0 ? all : done;
        all += done;
        if ((size_t)done < parts[i].iov_len)
            break;
    }
    return all;
}
ssize_t readv(int fd, const struct iovec* parts, int n)
{
    return moveParts(kRead, rawRead, fd, parts, n);
}
ssize_t writev(int fd, const struct iovec* parts, int n)
{
    return moveParts(kWrite, rawWrite, fd, parts, n);
}

// -- Files that are opened --

static int openBelow(int at, const char* path, int flags, mode_t mode)
{
    if (!isPathBelow(path))
        return (int)syscall(SYS_openat, at, path, flags, mode);
    if (judge(kOpen) == kFail)
        return -1;
    struct stat before;
    const int isNew = record >= 0 && (flags & O_CREAT) != 0 && stat(path, &before) != 0;
    const int fd = (int)syscall(SYS_openat, at, path, flags, mode);
    if (fd >= 0 && isNew)
        note('c', inodeOf(fd), 0, path, strlen(path));
    else if (fd >= 0 && (flags & O_TRUNC) != 0)
        note('t', inodeOf(fd), 0, NULL, 0);
    return fd;
}

#define OPEN_MODE(flags)                          \
    mode_t mode = 0;                              \
    if (((flags) & (O_CREAT | O_TMPFILE)) != 0) { \
        va_list rest;                             \
        va_start(rest, flags);                    \
        mode = (mode_t)va_arg(rest, int);         \
        va_end(rest);                             \
    }
int open(const char* path, int flags, ...)
{
    OPEN_MODE(flags)
    return openBelow(AT_FDCWD, path, flags, mode);
}
int open64(const char* path, int flags, ...)
{
    OPEN_MODE(flags)
    return openBelow(AT_FDCWD, path, flags, mode);
}
int openat(int at, const char* path, int flags, ...)
{
    OPEN_MODE(flags)
    return openBelow(at, path, flags, mode);
}
int openat64(int at, const char* path, int flags, ...)
{
    OPEN_MODE(flags)
    return openBelow(at, path, flags, mode);
}

// Streams of the C library move their bytes inside it: those below the folder get the calls above instead.
static ssize_t streamRead(void* fd, char* bytes, size_t count)
{
    return read((int)(intptr_t)fd, bytes, count);
}
static ssize_t streamWrite(void* fd, const char* bytes, size_t count)
{
    size_t all = 0;
    while (all < count) {
        const ssize_t done = write((int)(intptr_t)fd, bytes + all, count - all);
        if (done <= 0)
            break;
        all += (size_t)done;
    }
    return (ssize_t)all;
}
static int streamSeek(void* fd, off64_t* offset, int whence)
{
    *offset = lseek64((int)(intptr_t)fd, *offset, whence);
    return *offset < 0 ? -1 : 0;
}
static int streamClose(void* fd)
{
    return close((int)(intptr_t)fd);
}

FILE* fopen(const char* path, const char* mode)
{
    static FILE* (*next)(const char*, const char*);
    if (next == NULL)
        next = (FILE * (*)(const char*, const char*)) dlsym(RTLD_NEXT, "fopen");
    if (!isPathBelow(path))
        return next(path, mode);
    const int both = strchr(mode, '+') != NULL;
    const int flags = (mode[0] == 'r' ? 0 : O_CREAT | (mode[0] == 'w' ? O_TRUNC : O_APPEND)) |
                      (both             ? O_RDWR
                       : mode[0] == 'r' ? O_RDONLY
                                        : O_WRONLY);
    const int fd = open(path, flags | O_CLOEXEC, 0666);
    const cookie_io_functions_t calls = {streamRead, streamWrite, streamSeek, streamClose};
    return fd < 0 ? NULL : fopencookie((void*)(intptr_t)fd, mode, calls);
}
// Without a buffer such a stream would be read byte by byte.
int setvbuf(FILE* stream, char* buffer, int mode, size_t size)
{
    enum { kNoWrites = 8 };  // the library's own flag of a stream that was opened for reading
    static int (*next)(FILE*, char*, int, size_t);
    if (next == NULL)
        next = (int (*)(FILE*, char*, int, size_t))dlsym(RTLD_NEXT, "setvbuf");
    return fileno(stream) < 0 && (stream->_flags & kNoWrites) != 0 ? 0 : next(stream, buffer, mode, size);
}

// The C++ library opens its streams so, and moves their bytes by the calls above itself.
FILE* fopen64(const char* path, const char* mode)
{
    static FILE* (*next)(const char*, const char*);
    if (next == NULL)
        next = (FILE * (*)(const char*, const char*)) dlsym(RTLD_NEXT, "fopen64");
    struct stat before;
    const int below = isPathBelow(path);
    const int isThere = stat(path, &before) == 0;
    FILE* const opened = below && judge(kOpen) == kFail ? NULL : next(path, mode);
    if (below && opened != NULL && mode[0] == 'w')
        note(isThere ? 't' : 'c', inodeOf(fileno(opened)), 0, path, isThere ? 0 : strlen(path));
    return opened;
}

// -- What makes changes last, and names --

static int syncBelow(long number, int fd)
{
    if (!isFileBelow(fd))
        return (int)syscall(number, fd);
    if (judge(kSync) != kGo)
        return -1;
    note('s', inodeOf(fd), 0, NULL, 0);
    return (int)syscall(number, fd);
}
int fsync(int fd)
{
    return syncBelow(SYS_fsync, fd);
}
int fdatasync(int fd)
{
    return syncBelow(SYS_fdatasync, fd);
}

int renameat2(int fromAt, const char* from, int toAt, const char* to, unsigned flags)
{
    if (!isPathBelow(to))
        return (int)syscall(SYS_renameat2, fromAt, from, toAt, to, flags);
    if (judge(kRename) != kGo)
        return -1;
    const int done = (int)syscall(SYS_renameat2, fromAt, from, toAt, to, flags);
    char names[2 * PATH_MAX];
    if (done == 0)
        note('r', 0, strlen(from), names, (size_t)snprintf(names, sizeof names, "%s%s", from, to));
    return done;
}
int renameat(int fromAt, const char* from, int toAt, const char* to)
{
    return renameat2(fromAt, from, toAt, to, 0);
}
int rename(const char* from, const char* to)
{
    return renameat2(AT_FDCWD, from, AT_FDCWD, to, 0);
}

// A file that was made without a name gets one.
int linkat(int fromAt, const char* from, int toAt, const char* to, int flags)
{
    if (!isPathBelow(to))
        return (int)syscall(SYS_linkat, fromAt, from, toAt, to, flags);
    if (judge(kRename) != kGo)
        return -1;
    const int done = (int)syscall(SYS_linkat, fromAt, from, toAt, to, flags);
    struct stat made = {0};
    if (done == 0 && stat(to, &made) == 0)
        note('c', made.st_ino, 0, to, strlen(to));
    return done;
}

int unlinkat(int at, const char* path, int flags)
{
    if (!isPathBelow(path))
        return (int)syscall(SYS_unlinkat, at, path, flags);
    if (judge(kRemove) != kGo)
        return -1;
    const int done = (int)syscall(SYS_unlinkat, at, path, flags);
    if (done == 0)
        note('u', 0, 0, path, strlen(path));
    return done;
}
int unlink(const char* path)
{
    return unlinkat(AT_FDCWD, path, 0);
}
int remove(const char* path)
{
    const int done = unlinkat(AT_FDCWD, path, 0);
    return done != 0 && errno == EISDIR ? unlinkat(AT_FDCWD, path, AT_REMOVEDIR) : done;
}

int ftruncate(int fd, off_t length)
{
    if (!isFileBelow(fd))
        return (int)syscall(SYS_ftruncate, fd, length);
    if (judge(kWrite) != kGo)
        return -1;
    note('t', inodeOf(fd), (uint64_t)length, NULL, 0);
    return (int)syscall(SYS_ftruncate, fd, length);
}
int truncate(const char* path, off_t length)
{
    if (!isPathBelow(path))
        return (int)syscall(SYS_truncate, path, length);
    struct stat found = {0};
    if (judge(kWrite) != kGo)
        return -1;
    if (stat(path, &found) == 0)
        note('t', found.st_ino, (uint64_t)length, NULL, 0);
    return (int)syscall(SYS_truncate, path, length);
}
int truncate64(const char* path, off64_t length)
{
    return truncate(path, length);
}
int ftruncate64(int fd, off64_t length)
{
    return ftruncate(fd, length);
}

int fallocate(int fd, int mode, off_t offset, off_t length)
{
    if (!isFileBelow(fd))
        return (int)syscall(SYS_fallocate, fd, mode, offset, length);
    if (judge(kReserve) != kGo)
        return -1;
    if (room >= 0 && length > room - atomic_load(&written)) {
        errno = faultErrno;
        return -1;
    }
    const int done = (int)syscall(SYS_fallocate, fd, mode, offset, length);
    if (done == 0)
        note('g', inodeOf(fd), (uint64_t)(offset + length), NULL, 0);
    return done;
}
int fallocate64(int fd, int mode, off64_t offset, off64_t length)
{
    return fallocate(fd, mode, offset, length);
}

ssize_t copy_file_range(int from, off64_t* fromAt, int to, off64_t* toAt, size_t count, unsigned flags)
{
    if (!isFileBelow(to))
        return syscall(SYS_copy_file_range, from, fromAt, to, toAt, count, flags);
    const enum verdict verdict = judge(kCopy);
    if (verdict == kFail)
        return -1;
    if (room >= 0 || record >= 0) {  // written bytes are counted and noted where they are written
        errno = EXDEV;
        return -1;
    }
    const size_t part = verdict == kGo ? count : count < 2048 ? count : 1024;
    const ssize_t done = syscall(SYS_copy_file_range, from, fromAt, to, toAt, part, flags);
    if (verdict == kHalfAndDie)
        die();
    return done;
}

int flock(int fd, int operation)
{
    if (isFileBelow(fd) && judge(kLock) != kGo)
        return -1;
    return (int)syscall(SYS_flock, fd, operation);
}

// -- Memory --

extern void* __libc_malloc(size_t);
extern void* __libc_calloc(size_t, size_t);
extern void* __libc_realloc(void*, size_t);
extern void* __libc_memalign(size_t, size_t);

// What Qt asks for by itself, for the pictures of its windows, it does not survive to be refused; and where a
// font cannot be loaded, texts are drawn in another one, which makes a picture of other bytes that lacks
// nothing.
static int isOfWindows(const void* caller)
{
    Dl_info from;
    return dladdr(caller, &from) != 0 && from.dli_fname != NULL &&
           (strstr(from.dli_fname, "libQt") != NULL || strstr(from.dli_fname, "libfreetype") != NULL);
}

static int isRefused(size_t bytes, const void* caller)
{
    enum { kSmall = 64 * 1024 };
    if (bytes <= kSmall || folderLength == 0 || !armed || isOfWindows(caller) || judge(kAlloc) == kGo)
        return 0;
    errno = ENOMEM;
    return 1;
}
void* malloc(size_t bytes)
{
    return isRefused(bytes, __builtin_return_address(0)) ? NULL : __libc_malloc(bytes);
}
void* calloc(size_t n, size_t bytes)
{
    return isRefused(n * bytes, __builtin_return_address(0)) ? NULL : __libc_calloc(n, bytes);
}
void* realloc(void* old, size_t bytes)
{
    return isRefused(bytes, __builtin_return_address(0)) ? NULL : __libc_realloc(old, bytes);
}
void* aligned_alloc(size_t alignment, size_t bytes)
{
    return isRefused(bytes, __builtin_return_address(0)) ? NULL : __libc_memalign(alignment, bytes);
}
int posix_memalign(void** to, size_t alignment, size_t bytes)
{
    void* const made =
        isRefused(bytes, __builtin_return_address(0)) ? NULL : __libc_memalign(alignment, bytes);
    if (made != NULL)
        *to = made;
    return made == NULL ? ENOMEM : 0;
}

// -- The clock --

time_t time(time_t* to)
{
    const char* const now = getenv("VELTRAC_FAULT_NOW");
    const time_t is = now != NULL ? (time_t)atol(now) : (time_t)syscall(SYS_time, NULL);
    if (to != NULL)
        *to = is;
    return is;
}
