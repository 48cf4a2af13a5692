#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

// The least that a run can cost: makes the directory as the program does, then opens, writes whole and closes files of
// the same number and size, and the list.
//   bare_loop FILES BYTES LIST_BYTES

namespace {

void write_whole(const char* path, const std::string& bytes) {
    const int file = ::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (file < 0 || ::write(file, bytes.data(), bytes.size()) != static_cast<long>(bytes.size()) ||
        ::close(file) != 0) {
        std::perror(path);
        std::exit(1);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4 || std::system("/bin/mkdir -p PES-0") != 0) {
        return 1;
    }
    const int files = std::atoi(argv[1]);
    const std::string bytes(std::stoul(argv[2]), 'x');
    for (int i = 0; i < files; ++i) {
        char path[64];
        std::snprintf(path, sizeof path, "PES-0/coord-%06d+dx.com", i);
        write_whole(path, bytes);
    }
    write_whole("PES-0/files.out", std::string(std::stoul(argv[3]), 'x'));
    return 0;
}
