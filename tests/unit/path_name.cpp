#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "file/file.hpp"

using namespace displacement_generator;

namespace {

TEST(path_name, has_a_directory_a_base_an_extension_and_a_main_part) {
    struct row {
        const char* name;
        const char* dir;
        const char* base;
        const char* ext;
        const char* main;
    };
    const row rows[] = {
        {"/opt/tools/bin/prog", "/opt/tools/bin", "prog", "", "prog"},
        {"  work/w.opt.gjf", "work", "w.opt.gjf", "gjf", "w.opt"},
        {"w.gjf", "", "w.gjf", "gjf", "w"},
        {"/x", "", "x", "", "x"},
        {"dir/", "dir", "", "", ""},
        {"run.d/input", "run.d", "input", "d/input", "input"},
        {"", "", "", "", ""},
        {"    ", "", "", "", ""},
        {"/", "", "", "", ""},
        {"//", "/", "", "", ""},
        {"//x", "/", "x", "", "x"},
        {"a//b", "a/", "b", "", "b"},
        {".", "", ".", "", ""},
        {"..", "", "..", "", "."},
        {".hidden", "", ".hidden", "hidden", ""},
        {"name.", "", "name.", "", "name"},
        {"./a", ".", "a", "/a", "a"},
        {"a.b/", "a.b", "", "b/", ""},
        {" a b / c.d e  ", "a b ", " c.d e", "d e", " c"},
        {"\t/x", "\t", "x", "", "x"},
        {"/opt/a.out   ", "/opt", "a.out", "out", "a"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.name);
        const std::string_view name = tested.name;
        EXPECT_EQ(file::name_dir(name), tested.dir);
        EXPECT_EQ(file::name_base(name), tested.base);
        EXPECT_EQ(file::name_ext(name), tested.ext);
        EXPECT_EQ(file::name_main(name), tested.main);
        // A text of fixed length gives one of the same length.
        const base::text<24> text(name);
        EXPECT_EQ(file::name_dir(text), base::text<24>(tested.dir));
        EXPECT_EQ(file::name_ext(text), base::text<24>(tested.ext));
        EXPECT_EQ(file::name_main(text), base::text<24>(tested.main));
        EXPECT_EQ(file::name_base(text), base::text<24>(tested.base));
    }
}

TEST(path_name, may_fill_its_text) {
    const base::text<7> name("dir/a.b");
    EXPECT_EQ(std::string_view(file::name_dir(name)), "dir    ");
    EXPECT_EQ(std::string_view(file::name_base(name)), "a.b    ");
    EXPECT_EQ(std::string_view(file::name_ext(name)), "b      ");
    EXPECT_EQ(std::string_view(file::name_main(name)), "a      ");
}

// Of a string that ends with the statement no part is to be had; of what lives on, or is copied, it is.
template <class type>
concept has_parts = requires(type&& name) {
    file::name_dir(std::forward<type>(name));
    file::name_base(std::forward<type>(name));
    file::name_ext(std::forward<type>(name));
    file::name_main(std::forward<type>(name));
};
template <class type>
concept has_any_part = requires(type&& name) {
    file::name_dir(std::forward<type>(name));
}
|| requires(type&& name) { file::name_base(std::forward<type>(name)); }
|| requires(type&& name) { file::name_ext(std::forward<type>(name)); }
|| requires(type&& name) { file::name_main(std::forward<type>(name)); };
static_assert(has_parts<std::string&> && has_parts<const std::string&> && has_parts<std::string_view>);
static_assert(has_parts<const char*> && has_parts<const char (&)[3]> && has_parts<base::text<3>>);
static_assert(!has_any_part<std::string> && !has_any_part<const std::string>);

}  // namespace
