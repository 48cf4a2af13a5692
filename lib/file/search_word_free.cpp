#include "file/file.hpp"

namespace displacement_generator {

int file::search_word_free(int fid, std::string_view word, base::text_ref line) {
    bool read = false;
    do {
        read = read_record(fid, line);
        if (std::string_view(line).find(word) != std::string_view::npos) {
            return 1;
        }
    } while (read);
    return 0;
}

int search_word_free(int fid, std::string_view word, base::text_ref line) {
    return file::search_word_free(fid, word, line);
}

}  // namespace displacement_generator
