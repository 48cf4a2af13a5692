#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

// Preloaded into the program under test, this stands between it and the system. The calls of one kind that the program
// makes on files of its own are counted, and one of them, or every one, goes wrong:
//
//   FAILING_CALL   one or several of open, lock, empty, read, write, close, cut, copy_file_range, stat, system,
//                  mkstemp, fchmod and rename; "empty" and "cut" are both ftruncate, to nothing and to some length;
//                  copy_file_range is for its source; a file of mkstemp is known by the name that is asked for, with
//                  XXXXXX, and rename by the new name
//   FAILING_FILE   optional: only calls for a file of this name are counted
//   FAILING_TURN   which one, counted from 1; 0 for every one
//   FAILING_WAY    how: an errno as a number; "interrupted", once; "half" of what was asked for, one "byte" of it, or
//                  "none", without an error; "stopped" until it is told to go on, "killed" before the call, or "torn",
//                  half of it done; for stat "twin": the file has the inode number that fstat told last, but lies on
//                  another file system
//   FAILING_MARK   a file that is made when it happens and then holds the name of the file that the call was for
//   FAILING_LOG    a file that gets a line for each call, in their order: its kind and the name of the file
//
// Nothing here uses the C library where that could come back to these functions.

namespace {

constexpr int most_descriptors = 256;
constexpr std::size_t longest_name = 512;

struct settings {
    char call[64];
    char file[longest_name];
    long turn;
    char way[16];
    char mark[longest_name];
    char log[longest_name];
};

settings asked = {};
long calls = 0;
bool interrupted = false;
ino_t last_inode = 0;
char names[most_descriptors][longest_name] = {};  // of the program's own files; blank for all others

template <std::size_t n>
void copy_text(char (&to)[n], const char* from) {
    std::strncpy(to, from == nullptr ? "" : from, n - 1);
}

/// Only the program itself is to suffer, not the commands that it runs.
__attribute__((constructor)) void take_settings() {
    copy_text(asked.call, std::getenv("FAILING_CALL"));
    copy_text(asked.file, std::getenv("FAILING_FILE"));
    copy_text(asked.way, std::getenv("FAILING_WAY"));
    copy_text(asked.mark, std::getenv("FAILING_MARK"));
    copy_text(asked.log, std::getenv("FAILING_LOG"));
    const char* turn = std::getenv("FAILING_TURN");
    asked.turn = turn == nullptr ? 0 : std::strtol(turn, nullptr, 10);
    ::unsetenv("LD_PRELOAD");
}

const char* name_of(int descriptor) {
    return descriptor >= 0 && descriptor < most_descriptors ? names[descriptor] : "";
}

void log(const char* call, const char* name) {
    if (asked.log[0] == '\0' || name[0] == '\0') {
        return;
    }
    char line[2 * longest_name];
    std::size_t size = 0;
    for (const char* part : {call, " ", name, "\n"}) {
        const std::size_t length = ::strnlen(part, longest_name - 64);
        std::memcpy(line + size, part, length);
        size += length;
    }
    const auto file = static_cast<int>(::syscall(SYS_openat, AT_FDCWD, asked.log, O_WRONLY | O_CREAT | O_APPEND, 0600));
    ::syscall(SYS_write, file, line, size);
    ::syscall(SYS_close, file);
}

/// Result: whether it is now that the call goes wrong.
bool is_turn(const char* call, const char* name) {
    log(call, name);
    if (name[0] == '\0' || std::strstr(asked.call, call) == nullptr ||
        (asked.file[0] != '\0' && std::strcmp(name, asked.file) != 0)) {
        return false;
    }
    ++calls;
    if (asked.turn != 0 && calls != asked.turn) {
        return false;
    }
    if (asked.mark[0] != '\0') {
        const auto mark = static_cast<int>(::syscall(SYS_openat, AT_FDCWD, asked.mark, O_WRONLY | O_CREAT, 0600));
        ::syscall(SYS_write, mark, name, std::strlen(name));
        ::syscall(SYS_close, mark);
        asked.mark[0] = '\0';
    }
    return true;
}

bool is_way(const char* way) { return std::strcmp(way, asked.way) == 0; }

void die() { ::kill(::getpid(), SIGKILL); }

/// Result: whether the call fails, with errno set.
bool fails() {
    if (is_way("killed")) {
        die();
    }
    if (is_way("stopped")) {
        ::kill(::getpid(), SIGSTOP);
        return false;
    }
    if (is_way("interrupted")) {
        interrupted = !interrupted;
        errno = EINTR;
        return interrupted;
    }
    errno = static_cast<int>(std::strtol(asked.way, nullptr, 10));
    return errno != 0;
}

/// How much of a transfer is done.
std::size_t part(std::size_t size) {
    if (is_way("half") || is_way("torn")) {
        return size < 2 ? size : size / 2;
    }
    return is_way("byte") && size > 1 ? 1 : size;
}

long transfer(const char* call, long number, int descriptor, void* bytes, std::size_t size) {
    if (!is_turn(call, name_of(descriptor))) {
        return ::syscall(number, descriptor, bytes, size);
    }
    if (is_way("none")) {
        errno = 0;
        return 0;
    }
    if (fails()) {
        return -1;
    }
    const long count = ::syscall(number, descriptor, bytes, part(size));
    if (is_way("torn")) {
        die();
    }
    return count;
}

}  // namespace

// The declarations are those of the C library.
extern "C" {

int open(const char* file, int oflag, ...) {  // NOLINT(cert-dcl50-cpp)
    std::va_list arguments;
    va_start(arguments, oflag);
    const unsigned mode = (oflag & O_CREAT) != 0 ? va_arg(arguments, unsigned) : 0;
    va_end(arguments);
    const bool own = std::strncmp(file, "/dev/null", longest_name) != 0;
    if (is_turn("open", own ? file : "") && fails()) {
        return -1;
    }
    const auto descriptor = static_cast<int>(::syscall(SYS_openat, AT_FDCWD, file, oflag, mode));
    if (own && descriptor >= 0 && descriptor < most_descriptors) {
        copy_text(names[descriptor], file);
    }
    return descriptor;
}

ssize_t read(int fd, void* buf, std::size_t nbytes) { return transfer("read", SYS_read, fd, buf, nbytes); }

ssize_t write(int fd, const void* buf, std::size_t n) {
    return transfer("write", SYS_write, fd, const_cast<void*>(buf), n);
}

int close(int fd) {
    const bool failed = is_turn("close", name_of(fd)) && fails();
    const int error = errno;
    const auto result = static_cast<int>(::syscall(SYS_close, fd));  // closed in any case, as the system does it
    if (fd >= 0 && fd < most_descriptors) {
        names[fd][0] = '\0';
    }
    if (failed) {
        errno = error;
        return -1;
    }
    return result;
}

int ftruncate(int fd, off_t length) {
    if (is_turn(length == 0 ? "empty" : "cut", name_of(fd)) && fails()) {
        return -1;
    }
    return static_cast<int>(::syscall(SYS_ftruncate, fd, length));
}

int fcntl(int fd, int cmd, ...) {  // NOLINT(cert-dcl50-cpp)
    std::va_list arguments;
    va_start(arguments, cmd);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    if (cmd == F_OFD_SETLK && is_turn("lock", name_of(fd)) && fails()) {
        return -1;
    }
    const auto result = static_cast<int>(::syscall(SYS_fcntl, fd, cmd, argument));
    if ((cmd == F_DUPFD || cmd == F_DUPFD_CLOEXEC) && result >= 0 && result < most_descriptors) {
        copy_text(names[result], name_of(fd));
    }
    return result;
}

int mkstemp(char* name) {
    char asked_name[longest_name] = {};
    std::memcpy(asked_name, name, ::strnlen(name, longest_name - 1));
    if (is_turn("mkstemp", asked_name) && fails()) {
        return -1;
    }
    using function = int (*)(char*);
    const int descriptor = reinterpret_cast<function>(::dlsym(RTLD_NEXT, "mkstemp"))(name);
    if (descriptor >= 0 && descriptor < most_descriptors) {
        std::memcpy(names[descriptor], asked_name, longest_name);
    }
    return descriptor;
}

int fchmod(int fd, mode_t mode) {
    if (is_turn("fchmod", name_of(fd)) && fails()) {
        return -1;
    }
    return static_cast<int>(::syscall(SYS_fchmod, fd, mode));
}

int rename(const char* old, const char* name) {
    if (is_turn("rename", name) && fails()) {
        return -1;
    }
    return static_cast<int>(::syscall(SYS_renameat, AT_FDCWD, old, AT_FDCWD, name));
}

ssize_t copy_file_range(int infd, off64_t* pinoff, int outfd, off64_t* poutoff, std::size_t length, unsigned flags) {
    if (is_turn("copy_file_range", name_of(infd))) {
        if (is_way("none")) {
            return 0;
        }
        if (fails()) {
            return -1;
        }
        struct stat status {};
        ::fstat(infd, &status);
        const auto whole = static_cast<std::size_t>(status.st_size);
        length = part(length < whole ? length : whole);
    }
    return ::syscall(SYS_copy_file_range, infd, pinoff, outfd, poutoff, length, flags);
}

int fstat(int fd, struct stat* buf) {
    const auto result = static_cast<int>(::syscall(SYS_newfstatat, fd, "", buf, AT_EMPTY_PATH));
    last_inode = buf->st_ino;
    return result;
}

int stat(const char* file, struct stat* buf) {
    const auto result = static_cast<int>(::syscall(SYS_newfstatat, AT_FDCWD, file, buf, 0));
    if (is_turn("stat", file) && is_way("twin")) {
        buf->st_ino = last_inode;
        ++buf->st_dev;
    }
    return result;
}

int system(const char* command) {
    if (is_turn("system", command) && fails()) {
        return -1;
    }
    using function = int (*)(const char*);
    return reinterpret_cast<function>(::dlsym(RTLD_NEXT, "system"))(command);
}

}  // extern "C"
