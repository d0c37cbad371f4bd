/* Preloaded into a program under test (LD_PRELOAD): counts its calls that change or read files below one folder and, at
 * the N-th, kills it or lets the call fail. Everything is told by environment variables:
 *
 *   FAULT_FOLDER  calls on files below this folder (absolute, no trailing slash) and on the folder itself count; absent:
 *                 nothing counts
 *   FAULT_CALLS   words joined by commas; absent: all that change something
 *                   open (with O_CREAT)  write  sync  rename  link  unlink  truncate  read
 *   FAULT_AT      number of the call, 1-based; 0 or absent: none
 *   FAULT_ACTION  kill        SIGKILL before the call
 *                 tear        a write does its first half, then SIGKILL; as kill for others
 *                 short       writes and reads do half of what is asked for (at least a byte), from that call on
 *                 truncate, append, remove
 *                             cuts the file of the call in half, adds a byte to it or removes it; then the call is made
 *                 ENOSPC, EIO, EROFS, EACCES, EDQUOT
 *                             the call fails with this error
 *   FAULT_STICKY  1: all counted calls from there on fail alike
 *   FAULT_COUNT   file that takes the number of counted calls when the program ends by itself
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

static atomic_long calls;

#define REAL(name, type) ((type)dlsym(RTLD_NEXT, name))

static int is_below(const char *path)
{
    const char *folder = getenv("FAULT_FOLDER");
    size_t length = folder ? strlen(folder) : 0;
    return length > 0 && strncmp(path, folder, length) == 0 && (path[length] == '/' || path[length] == '\0');
}

static int path_of(int descriptor, char *path)
{
    char link[64];
    snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    ssize_t length = readlink(link, path, PATH_MAX - 1);
    path[length < 0 ? 0 : length] = '\0';
    return length > 0;
}

/* The path as seen from the root; symbolic links stay as they are. */
static void absolute(int folder, const char *path, char *result)
{
    char base[PATH_MAX] = "";
    if (path[0] == '/') {
        snprintf(result, 2 * PATH_MAX, "%s", path);
        return;
    }
    if (folder == AT_FDCWD) {
        if (!getcwd(base, sizeof base))
            base[0] = '\0';
    } else {
        path_of(folder, base);
    }
    snprintf(result, 2 * PATH_MAX, "%s/%s", base, path);
}

static int is_wanted(const char *kind)
{
    const char *list = getenv("FAULT_CALLS");
    if (!list || !*list)
        return strcmp(kind, "read") != 0;
    size_t length = strlen(kind);
    for (const char *at = list; (at = strstr(at, kind)) != NULL; at += length) {
        if ((at == list || at[-1] == ',') && (at[length] == ',' || at[length] == '\0'))
            return 1;
    }
    return 0;
}

enum { GO_ON, SHORTER, TORN, FAIL };

static void die(void)
{
    kill(getpid(), SIGKILL);
    for (;;)
        pause();
}

static void change_file(const char *action, const char *path)
{
    struct stat status;
    if (strcmp(action, "remove") == 0) {
        syscall(SYS_unlink, path);
    } else if (strcmp(action, "append") == 0) {
        int file = (int)syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_APPEND);
        if (file >= 0 && syscall(SYS_write, file, "1", 1) == 1)
            close(file);
    } else if (stat(path, &status) == 0) {
        syscall(SYS_truncate, path, (long)(status.st_size / 2));
    }
}

/* Counts the call and says what is to become of it; errno is set for FAIL. */
static int fate(const char *kind, const char *path)
{
    if (!is_below(path) || !is_wanted(kind))
        return GO_ON;
    long number = atomic_fetch_add(&calls, 1) + 1;
    const char *at = getenv("FAULT_AT");
    const char *sticky = getenv("FAULT_STICKY");
    const char *action = getenv("FAULT_ACTION");
    long wanted = at ? atol(at) : 0;
    int all = sticky && *sticky == '1';
    if (wanted <= 0 || !action || number < wanted)
        return GO_ON;
    if (strcmp(action, "short") == 0)
        return SHORTER;
    if (number > wanted && !all)
        return GO_ON;
    if (strcmp(action, "kill") == 0)
        die();
    if (strcmp(action, "tear") == 0)
        return TORN;
    static const struct {
        const char *name;
        int error;
    } errors[] = {{"ENOSPC", ENOSPC}, {"EIO", EIO}, {"EROFS", EROFS}, {"EACCES", EACCES}, {"EDQUOT", EDQUOT}};
    for (size_t i = 0; i < sizeof errors / sizeof errors[0]; ++i) {
        if (strcmp(action, errors[i].name) == 0) {
            errno = errors[i].error;
            return FAIL;
        }
    }
    change_file(action, path);
    return GO_ON;
}

static int fate_of_descriptor(const char *kind, int descriptor)
{
    char path[PATH_MAX];
    int error = errno;
    int result = path_of(descriptor, path) ? fate(kind, path) : GO_ON;
    if (result != FAIL)
        errno = error;
    return result;
}

static int fate_of_path(const char *kind, int folder, const char *path)
{
    char whole[2 * PATH_MAX];
    int error = errno;
    absolute(folder, path, whole);
    int result = fate(kind, whole);
    if (result == TORN)
        die();
    if (result != FAIL)
        errno = error;
    return result;
}

/* Half of a count, at least one. */
static size_t half(size_t count)
{
    return count > 1 ? count / 2 : count;
}

#define TRANSFER(kind, descriptor, count, call)                                                                          \
    int what = fate_of_descriptor(kind, descriptor);                                                                    \
    if (what == FAIL)                                                                                                    \
        return -1;                                                                                                       \
    if (what == SHORTER || what == TORN)                                                                                 \
        count = half(count);                                                                                             \
    ssize_t result = call;                                                                                               \
    if (what == TORN)                                                                                                    \
        die();                                                                                                           \
    return result;

ssize_t write(int descriptor, const void *bytes, size_t count)
{
    TRANSFER("write", descriptor, count, REAL("write", ssize_t(*)(int, const void *, size_t))(descriptor, bytes, count))
}

ssize_t pwrite(int descriptor, const void *bytes, size_t count, off_t offset)
{
    TRANSFER("write", descriptor, count,
             REAL("pwrite", ssize_t(*)(int, const void *, size_t, off_t))(descriptor, bytes, count, offset))
}

ssize_t pwrite64(int descriptor, const void *bytes, size_t count, off64_t offset)
{
    TRANSFER("write", descriptor, count,
             REAL("pwrite64", ssize_t(*)(int, const void *, size_t, off64_t))(descriptor, bytes, count, offset))
}

ssize_t writev(int descriptor, const struct iovec *pieces, int pieces_count)
{
    size_t count = (size_t)pieces_count;
    TRANSFER("write", descriptor, count,
             REAL("writev", ssize_t(*)(int, const struct iovec *, int))(descriptor, pieces, (int)count))
}

ssize_t copy_file_range(int from, off64_t *from_offset, int to, off64_t *to_offset, size_t count, unsigned flags)
{
    TRANSFER("write", to, count,
             REAL("copy_file_range", ssize_t(*)(int, off64_t *, int, off64_t *, size_t, unsigned))(from, from_offset, to,
                                                                                                  to_offset, count, flags))
}

ssize_t read(int descriptor, void *bytes, size_t count)
{
    TRANSFER("read", descriptor, count, REAL("read", ssize_t(*)(int, void *, size_t))(descriptor, bytes, count))
}

ssize_t pread(int descriptor, void *bytes, size_t count, off_t offset)
{
    TRANSFER("read", descriptor, count,
             REAL("pread", ssize_t(*)(int, void *, size_t, off_t))(descriptor, bytes, count, offset))
}

ssize_t pread64(int descriptor, void *bytes, size_t count, off64_t offset)
{
    TRANSFER("read", descriptor, count,
             REAL("pread64", ssize_t(*)(int, void *, size_t, off64_t))(descriptor, bytes, count, offset))
}

#define ON_DESCRIPTOR(kind, descriptor, call)                                                                            \
    int what = fate_of_descriptor(kind, descriptor);                                                                    \
    if (what == TORN)                                                                                                    \
        die();                                                                                                           \
    return what == FAIL ? -1 : call;

int fsync(int descriptor)
{
    ON_DESCRIPTOR("sync", descriptor, REAL("fsync", int (*)(int))(descriptor))
}

int fdatasync(int descriptor)
{
    ON_DESCRIPTOR("sync", descriptor, REAL("fdatasync", int (*)(int))(descriptor))
}

int ftruncate(int descriptor, off_t size)
{
    ON_DESCRIPTOR("truncate", descriptor, REAL("ftruncate", int (*)(int, off_t))(descriptor, size))
}

int ftruncate64(int descriptor, off64_t size)
{
    ON_DESCRIPTOR("truncate", descriptor, REAL("ftruncate64", int (*)(int, off64_t))(descriptor, size))
}

/* The others return an error number instead of -1. */
int posix_fallocate(int descriptor, off_t offset, off_t size)
{
    int what = fate_of_descriptor("truncate", descriptor);
    if (what == TORN)
        die();
    return what == FAIL ? errno : REAL("posix_fallocate", int (*)(int, off_t, off_t))(descriptor, offset, size);
}

int rename(const char *from, const char *to)
{
    return fate_of_path("rename", AT_FDCWD, to) == FAIL ? -1 : REAL("rename", int (*)(const char *, const char *))(from, to);
}

int renameat(int from_folder, const char *from, int to_folder, const char *to)
{
    return fate_of_path("rename", to_folder, to) == FAIL
               ? -1
               : REAL("renameat", int (*)(int, const char *, int, const char *))(from_folder, from, to_folder, to);
}

int renameat2(int from_folder, const char *from, int to_folder, const char *to, unsigned flags)
{
    return fate_of_path("rename", to_folder, to) == FAIL
               ? -1
               : REAL("renameat2", int (*)(int, const char *, int, const char *, unsigned))(from_folder, from, to_folder, to,
                                                                                           flags);
}

int link(const char *from, const char *to)
{
    return fate_of_path("link", AT_FDCWD, to) == FAIL ? -1 : REAL("link", int (*)(const char *, const char *))(from, to);
}

int linkat(int from_folder, const char *from, int to_folder, const char *to, int flags)
{
    return fate_of_path("link", to_folder, to) == FAIL
               ? -1
               : REAL("linkat", int (*)(int, const char *, int, const char *, int))(from_folder, from, to_folder, to, flags);
}

int unlink(const char *path)
{
    return fate_of_path("unlink", AT_FDCWD, path) == FAIL ? -1 : REAL("unlink", int (*)(const char *))(path);
}

int unlinkat(int folder, const char *path, int flags)
{
    return fate_of_path("unlink", folder, path) == FAIL ? -1
                                                        : REAL("unlinkat", int (*)(int, const char *, int))(folder, path, flags);
}

#define MODE_ARGUMENT                                                                                                    \
    mode_t mode = 0;                                                                                                     \
    if (flags & (O_CREAT | O_TMPFILE)) {                                                                                 \
        va_list arguments;                                                                                               \
        va_start(arguments, flags);                                                                                      \
        mode = va_arg(arguments, mode_t);                                                                                \
        va_end(arguments);                                                                                               \
    }

int open(const char *path, int flags, ...)
{
    MODE_ARGUMENT
    if ((flags & O_CREAT) && fate_of_path("open", AT_FDCWD, path) == FAIL)
        return -1;
    return REAL("open", int (*)(const char *, int, ...))(path, flags, mode);
}

int open64(const char *path, int flags, ...)
{
    MODE_ARGUMENT
    if ((flags & O_CREAT) && fate_of_path("open", AT_FDCWD, path) == FAIL)
        return -1;
    return REAL("open64", int (*)(const char *, int, ...))(path, flags, mode);
}

int openat(int folder, const char *path, int flags, ...)
{
    MODE_ARGUMENT
    if ((flags & O_CREAT) && fate_of_path("open", folder, path) == FAIL)
        return -1;
    return REAL("openat", int (*)(int, const char *, int, ...))(folder, path, flags, mode);
}

int openat64(int folder, const char *path, int flags, ...)
{
    MODE_ARGUMENT
    if ((flags & O_CREAT) && fate_of_path("open", folder, path) == FAIL)
        return -1;
    return REAL("openat64", int (*)(int, const char *, int, ...))(folder, path, flags, mode);
}

/* stdio goes around write(); a C++ stream does not. */
FILE *fopen(const char *path, const char *mode)
{
    if (mode[0] != 'r' && fate_of_path("open", AT_FDCWD, path) == FAIL)
        return NULL;
    return REAL("fopen", FILE *(*)(const char *, const char *))(path, mode);
}

FILE *fopen64(const char *path, const char *mode)
{
    if (mode[0] != 'r' && fate_of_path("open", AT_FDCWD, path) == FAIL)
        return NULL;
    return REAL("fopen64", FILE *(*)(const char *, const char *))(path, mode);
}

__attribute__((destructor)) static void tell_count(void)
{
    const char *path = getenv("FAULT_COUNT");
    char text[32];
    if (!path)
        return;
    int length = snprintf(text, sizeof text, "%ld\n", atomic_load(&calls));
    int file = (int)syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_CREAT | O_TRUNC, 0666);
    if (file >= 0) {
        if (syscall(SYS_write, file, text, (size_t)length) != length)
            unlink(path);
        syscall(SYS_close, file);
    }
}
