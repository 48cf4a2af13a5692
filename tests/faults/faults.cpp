#include "faults.hpp"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <map>

namespace displacement_generator::faults {

namespace fs = std::filesystem;

void write_inputs(std::string_view dx) {
    support::write_file("control", "&control fxyz = 'mol.gjf', dx = " + std::string(dx) + " /\n");
    support::write_file("mol.gjf",
                        "#p b3lyp/6-31g* force\n\nwater\n\n0 1\n"
                        "O 0.0 0.0 0.117\nH 0.0 0.757 -0.470\nH 0.0 -0.757 -0.470\n\n");
}

std::vector<std::string> output_names() {
    return {"PES-0/files.out",      "PES-0/coord-0-00.com", "PES-0/coord-1-dx.com", "PES-0/coord-1-dy.com",
            "PES-0/coord-1-dz.com", "PES-0/coord-1+dz.com", "PES-0/coord-2-dx.com", "PES-0/coord-2-dy.com",
            "PES-0/coord-2+dy.com", "PES-0/coord-2-dz.com", "PES-0/coord-2+dz.com"};
}

const support::tree& good_tree(const std::string& dx) {
    static std::map<std::string, support::tree> trees;
    if (!trees.contains(dx)) {
        const support::scratch_folder scratch;
        write_inputs(dx);
        run();
        trees[dx] = tree_here();
    }
    return trees[dx];
}

support::outcome run(const std::vector<std::string>& environment) {
    return support::run_program(support::displacement_generator(), {"control"}, environment);
}

support::outcome run_in_shell(const std::string& line, const std::vector<std::string>& environment) {
    return support::run_program("/bin/sh", {"-c", line, support::displacement_generator().string()}, environment);
}

support::tree tree_here() {
    support::tree result;
    const fs::path here = fs::current_path();
    for (const auto& entry : fs::recursive_directory_iterator(here)) {
        const std::string name = entry.path().lexically_relative(here).string();
        if (entry.is_symlink()) {
            result[name + '@'] = fs::read_symlink(entry.path()).string();
        } else if (entry.is_directory()) {
            result[name + '/'] = "";
        } else if (entry.is_regular_file()) {
            result[name] = support::read_file(entry.path());
        } else {
            result[name + '@'] = "";
        }
    }
    return result;
}

void write_tree(const support::tree& tree) {
    for (const auto& [name, bytes] : tree) {
        if (name.ends_with('/')) {
            fs::create_directory(name);
        } else {
            support::write_file(name, bytes);
        }
    }
}

bool says_complete() {
    const fs::path list = "PES-0/files.out";
    std::error_code ignored;
    return fs::is_regular_file(fs::symlink_status(list, ignored)) &&
           (support::read_file(list) + '\n').find("\nEnd_vesk_info\n") != std::string::npos;
}

void expect_good(const support::outcome& result) {
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.standard_output, "");
    EXPECT_EQ(result.standard_error, "");
    EXPECT_EQ(tree_here(), good_tree());
}

void expect_stopped(const support::outcome& result, const std::string& message) {
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.standard_output, "");
    EXPECT_EQ(result.standard_error, error_line(message));
    EXPECT_FALSE(says_complete());
}

std::string need() {
    std::size_t bytes = 0;
    for (const std::string& name : output_names()) {
        bytes += good_tree().at(name).size();
    }
    return "; the whole run needs " + std::to_string(bytes) + " bytes in " + std::to_string(output_names().size()) +
           " files";
}

bool find_plain_user(std::string& prefix) {
    prefix = ::geteuid() == 0 ? "setpriv --bounding-set=-dac_override,-dac_read_search " : "";
    return run_in_shell(prefix + "test -x \"$0\"").status == 0;
}

std::string error_line(const std::string& message) { return "displacement_generator: error: " + message + "\n"; }

std::string input_line(const std::string& name) {
    return " Error in opening file '" + name + "' in function num_file_lines, stop!\n";
}

std::string input_reason(const std::string& name, const std::string& reason) {
    if (name.empty()) {
        return error_line("control:1: key 'fxyz': expected the path of the Gaussian input, found none");
    }
    return error_line("control:1: key 'fxyz': cannot open '" + name + "'" +
                      (name.front() == '/' ? "" : " in the folder '" + fs::current_path().string() + "'") + ": " +
                      reason);
}

listening_socket::listening_socket(const std::string& name)
    : descriptor_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    name.copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(::bind(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
}

listening_socket::~listening_socket() { ::close(descriptor_); }

}  // namespace displacement_generator::faults
