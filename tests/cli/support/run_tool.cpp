#include "cli/support/run_tool.hpp"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <system_error>

#include <gtest/gtest.h>

namespace tool {

namespace {

namespace fs = std::filesystem;

constexpr unsigned DEADLINE_SECONDS = 60;

/// The most characters of a text that a failure message shows.
constexpr std::size_t LONGEST_SHOWN = 4000;

[[noreturn]] void fail(const char* operation) {
    throw std::system_error(errno, std::generic_category(), operation);
}

/// A fresh directory, removed with everything in it.
class Directory {
  public:
    explicit Directory(const Files& files) {
        std::string name = (fs::temp_directory_path() / "run-tool-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr)
            fail("mkdtemp");
        m_path = name;
        for (const auto& [file, content] : files) {
            const fs::path path = m_path / file;
            fs::create_directories(path.parent_path());
            if (file.back() != '/')
                std::ofstream(path, std::ios::binary) << content;
        }
    }
    Directory(const Directory&) = delete;
    Directory& operator=(const Directory&) = delete;
    ~Directory() {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }

    const fs::path& path() const { return m_path; }

    Files files() const {
        Files found;
        for (const auto& entry : fs::recursive_directory_iterator(m_path)) {
            const std::string name = entry.path().lexically_relative(m_path).string();
            if (entry.is_directory()) {
                found[name + '/'] = "";
                continue;
            }
            std::ifstream in(entry.path(), std::ios::binary);
            found[name].assign(std::istreambuf_iterator<char>(in), {});
        }
        return found;
    }

  private:
    fs::path m_path;
};

/// An unnamed file that serves as one of the program's standard streams. Unlike a pipe, it never
/// makes one side wait for the other.
class Stream {
  public:
    explicit Stream(const std::string& content = {}) : m_file(std::tmpfile(), &std::fclose) {
        if (m_file == nullptr)
            fail("tmpfile");
        if (std::fwrite(content.data(), 1, content.size(), m_file.get()) != content.size())
            fail("fwrite");
        std::rewind(m_file.get());
    }

    int descriptor() const { return fileno(m_file.get()); }

    /// Everything that was written, from the beginning.
    std::string content() {
        std::rewind(m_file.get());
        std::string text;
        std::array<char, 4096> block{};
        while (const std::size_t n = std::fread(block.data(), 1, block.size(), m_file.get()))
            text.append(block.data(), n);
        return text;
    }

  private:
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> m_file;
};

/// Limits a resource of this process and of the program that it executes.
bool limit(decltype(RLIMIT_DATA) resource, rlim_t most) {
    rlimit limits{};
    if (getrlimit(resource, &limits) != 0)
        return false;
    limits.rlim_cur = std::min(most, limits.rlim_max);
    return setrlimit(resource, &limits) == 0;
}

bool openOn(int descriptor, const std::string& path) {
    const int opened = open(path.c_str(), O_RDWR);
    // A directory can only be opened for reading.
    const int file = opened != -1 ? opened : open(path.c_str(), O_RDONLY);
    return file != -1 && dup2(file, descriptor) != -1;
}

bool breakPipe(int descriptor) {
    std::array<int, 2> ends{};
    return pipe(ends.data()) == 0 && close(ends[0]) == 0 && dup2(ends[1], descriptor) != -1 &&
           std::signal(SIGPIPE, SIG_IGN) != SIG_ERR;
}

/// Sets up this process as the call describes, before it executes the program.
bool prepare(const Call& call) {
    // A program that aborts must not leave a core file among the files that are compared.
    bool done = limit(RLIMIT_CORE, 0) && limit(RLIMIT_DATA, call.memory.value_or(RLIM_INFINITY)) &&
                limit(RLIMIT_FSIZE, call.fileSize.value_or(RLIM_INFINITY));
    for (const auto& [descriptor, path] : call.opened)
        done = done && openOn(descriptor, path);
    for (const int descriptor : call.broken)
        done = done && breakPipe(descriptor);
    for (const int descriptor : call.closed)
        done = done && close(descriptor) == 0;
    return done;
}

std::vector<char*> pointersTo(std::vector<std::string>& words) {
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return pointers;
}

int waitFor(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) == -1)
        if (errno != EINTR)
            fail("waitpid");
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

/// The text with its control characters and high bytes escaped, with one line per line of the text.
std::string readable(const std::string& text) {
    std::string shown;
    for (const char c : text.substr(0, LONGEST_SHOWN)) {
        if (c == '\n') {
            shown += "\\n\n    ";
        } else if (c == '\t') {
            shown += "\\t";
        } else if (c >= ' ' && c <= '~') {
            shown += c;
        } else {
            std::array<char, 8> hex{};
            std::snprintf(hex.data(), hex.size(), "\\x%02X", static_cast<unsigned char>(c));
            shown += hex.data();
        }
    }
    if (text.size() > LONGEST_SHOWN)
        shown += "[...]";
    return shown;
}

void describe(std::ostream& os, const std::string& what, const std::string& expected,
              const std::string& actual) {
    if (expected == actual)
        return;
    const auto [at, unused] =
        std::mismatch(expected.begin(), expected.end(), actual.begin(), actual.end());
    os << what << " differs from byte " << at - expected.begin() << " on\n  expected ("
       << expected.size() << " bytes):\n    " << readable(expected) << "\n  actual ("
       << actual.size() << " bytes):\n    " << readable(actual) << "\n";
}

std::string differences(const Outcome& expected, const Outcome& actual) {
    std::ostringstream os;
    if (expected.status != actual.status)
        os << "status: expected " << expected.status << ", actual " << actual.status << "\n";
    describe(os, "standard output", expected.out, actual.out);
    describe(os, "standard error", expected.err, actual.err);
    for (const auto& [name, content] : expected.files) {
        const auto found = actual.files.find(name);
        if (found == actual.files.end())
            os << "file " << readable(name) << " is missing\n";
        else
            describe(os, "file " + readable(name), content, found->second);
    }
    for (const auto& [name, content] : actual.files)
        if (!expected.files.contains(name))
            os << "file " << readable(name) << " is unexpected:\n    " << readable(content) << "\n";
    return os.str();
}

}  // namespace

Outcome run(const Call& call) {
    const Directory directory(call.files);
    const Stream in(call.input);
    Stream out;
    Stream err;

    std::vector<std::string> words{call.name};
    words.insert(words.end(), call.args.begin(), call.args.end());
    const std::vector<char*> argv = pointersTo(words);
    std::vector<std::string> variables = call.environment;
    for (char** variable = environ; *variable != nullptr; ++variable)
        variables.emplace_back(*variable);
    const std::vector<char*> environment = pointersTo(variables);

    const pid_t child = fork();
    if (child == -1)
        fail("fork");
    if (child == 0) {
        // The alarm survives execve. Its default action ends a program that hangs.
        alarm(DEADLINE_SECONDS);
        if (chdir(directory.path().c_str()) == 0 && dup2(in.descriptor(), STDIN_FILENO) != -1 &&
            dup2(out.descriptor(), STDOUT_FILENO) != -1 &&
            dup2(err.descriptor(), STDERR_FILENO) != -1 && prepare(call))
            execve(TOOL_PATH, argv.data(), environment.data());
        std::perror(TOOL_PATH);
        _exit(127);
    }

    Outcome outcome;
    outcome.status = waitFor(child);
    outcome.out = out.content();
    outcome.err = err.content();
    outcome.files = directory.files();
    return outcome;
}

void expectRun(const Call& call, const Outcome& expected, const char* file, int line) {
    const std::string found = differences(expected, run(call));
    if (found.empty())
        return;
    std::string command = readable(call.name);
    for (const std::string& arg : call.args)
        command += " '" + readable(arg) + "'";
    ADD_FAILURE_AT(file, line) << command << "\n  standard input:\n    " << readable(call.input)
                               << "\n"
                               << found;
}

}  // namespace tool
