#include "tests/host/Program.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace trel::test {

namespace {

// The child's end of an output: a file that is read when the child is gone, so
// that neither can wait for the other.
class Output {
public:
    Output() {
        char name[] = "/tmp/station_output_XXXXXX";
        descriptor_ = mkstemp(name);
        if (descriptor_ < 0) throw std::runtime_error("no temporary file");
        unlink(name);
    }
    ~Output() { close(descriptor_); }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    int descriptor() const { return descriptor_; }

    std::string text() const {
        std::string result;
        char buffer[4096];
        lseek(descriptor_, 0, SEEK_SET);
        for (ssize_t size; (size = read(descriptor_, buffer, sizeof buffer)) > 0;)
            result.append(buffer, static_cast<std::size_t>(size));
        return result;
    }

private:
    int descriptor_;
};

[[noreturn]] void become(const std::string& program, const std::vector<std::string>& arguments,
                         int out, int err) {
    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(program.data()));
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.data()));
    argv.push_back(nullptr);
    dup2(out, STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    execv(argv[0], argv.data());
    _exit(127);
}

}  // namespace

Result station(const std::vector<std::string>& arguments) {
    return stationAt(STATION_PROGRAM, arguments);
}

Result stationAt(const std::string& program, const std::vector<std::string>& arguments) {
    const Output out;
    const Output err;
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("no process");
    if (child == 0) become(program, arguments, out.descriptor(), err.descriptor());
    int status = 0;
    waitpid(child, &status, 0);
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    return {code, out.text(), err.text()};
}

std::string readFile(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw std::runtime_error("the test cannot read " + file.string());
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::filesystem::path sourceFolder() { return SOURCE_FOLDER; }

void FolderTest::SetUp() {
    std::string name = (std::filesystem::temp_directory_path() / "station_test_XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no temporary folder");
    folder_ = name;
}

void FolderTest::TearDown() { std::filesystem::remove_all(folder_); }

std::string FolderTest::write(const std::string& name, const std::string& text) const {
    std::ofstream(folder_ / name, std::ios::binary) << text;
    return path(name);
}

std::string stationText(const std::string& components, const std::string& connections) {
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<station id="1" name="Test">
  <smart_component id="2" name="Station Logic">
    <type string="StationLogic" />
    <parent uint="0" />
    <role_object uint="0" />
)" + connections +
           "  </smart_component>\n" + components + "</station>\n";
}

}  // namespace trel::test
