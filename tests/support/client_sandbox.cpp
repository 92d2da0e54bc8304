#include "tests/support/client_sandbox.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <pty.h>
#include <sstream>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// With TAVI_TEST_WINDOWS_BUILD naming the folder of a Windows build (make windows), the
// sandbox runs that build's TaviClient.exe under wine, beside that build's engine modules.
// The preview engine has no Windows build; its path stays the Linux one.
const char* windowsBuild() {
    const char* folder = std::getenv("TAVI_TEST_WINDOWS_BUILD");
    return folder && *folder ? folder : nullptr;
}

std::string windowsFile(const char* relative) { return std::string(windowsBuild()) + "/" + relative; }

std::string wineExecutable() {
    const char* wine = std::getenv("TAVI_TEST_WINE");
    return wine && *wine ? wine : "/usr/lib/wine/wine64";
}

} // namespace

bool underWine() { return windowsBuild() != nullptr; }
const char* clientFileName() { return windowsBuild() ? "TaviClient.exe" : "TaviClient"; }
const char* engineModuleName() { return windowsBuild() ? "TaviTracerAVX.dll" : "TaviTracerAVX.so"; }

std::string clientSpelling(const std::string& path) {
    if (!windowsBuild()) return path;
    std::string spelled = "Z:" + path;
    for (char& c : spelled)
        if (c == '/') c = '\\';
    return spelled;
}

std::string recordingEnginePath() {
    return windowsBuild() ? windowsFile("engines/recording/TaviTracerAVX.dll") : TAVI_RECORDING_ENGINE;
}
std::string previewEnginePath() { return TAVI_PREVIEW_ENGINE; }
std::string invalidEnginePath() {
    return windowsBuild() ? windowsFile("engines/invalid/TaviTracerAVX.dll") : TAVI_INVALID_ENGINE;
}
std::string clientExecutablePath() {
    return windowsBuild() ? windowsFile("bin/TaviClient.exe") : TAVI_CLIENT_EXECUTABLE;
}
std::string msvcAbiEnginePath() {
    if (!windowsBuild()) return "";
    std::string path = windowsFile("engines/msvc_abi/TaviTracerAVX.dll");
    return fs::exists(path) ? path : "";
}

namespace {

std::string drain(int fd) {
    std::string out;
    char buffer[4096];
    for (;;) {
        ssize_t got = read(fd, buffer, sizeof buffer);
        if (got > 0) {
            out.append(buffer, static_cast<size_t>(got));
        } else if (got < 0 && errno == EINTR) {
            continue;
        } else {
            break; // end of pipe, or EIO once the terminal's other side has closed
        }
    }
    return out;
}

// A client that hangs is stopped by the processor time it may use, long before ctest's
// timeout, and shows as a signal in the exit status.
constexpr rlim_t kProcessorSeconds = 120;

// The command line, from the program that is started: wine in front of a Windows client.
std::vector<std::string> commandLine(const std::string& executable, const std::vector<std::string>& arguments) {
    std::vector<std::string> line;
    if (windowsBuild()) line.push_back(wineExecutable());
    line.push_back(executable);
    line.insert(line.end(), arguments.begin(), arguments.end());
    return line;
}

// Wine's diagnostics of some channels, into a file rather than the test log.
struct WineTrace {
    std::string channels;
    std::string file;
};

[[noreturn]] void execClient(const std::vector<std::string>& line, const WineTrace* trace) {
    const rlimit processor{kProcessorSeconds, kProcessorSeconds};
    setrlimit(RLIMIT_CPU, &processor);
    if (trace) {
        setenv("WINEDEBUG", trace->channels.c_str(), 1);
        const int file = open(trace->file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (file < 0) _exit(127);
        dup2(file, STDERR_FILENO);
        close(file);
    }
    std::vector<char*> argv;
    for (const std::string& a : line) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    execv(argv[0], argv.data());
    _exit(127);
}

void waitFor(pid_t child, ClientRun& result) {
    int status = 0;
    rusage usage{};
    while (wait4(child, &status, 0, &usage) < 0 && errno == EINTR) {
    }
    result.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    result.peakResidentKiB = uint64_t(usage.ru_maxrss);
}

ClientRun runExecutable(const std::string& executable, const std::vector<std::string>& arguments, bool onTerminal,
                        const WineTrace* trace = nullptr) {
    ClientRun result;
    // Wine's own diagnostics would only fill the test log.
    if (windowsBuild()) setenv("WINEDEBUG", "-all", 0);
    const std::vector<std::string> line = commandLine(executable, arguments);
    const auto start = std::chrono::steady_clock::now();
    int fd = -1;
    pid_t child;
    if (onTerminal) {
        child = forkpty(&fd, nullptr, nullptr, nullptr);
        if (child == 0) execClient(line, trace);
    } else {
        int pipeEnds[2];
        if (pipe(pipeEnds) != 0) throw std::runtime_error("pipe");
        child = fork();
        if (child == 0) {
            dup2(pipeEnds[1], STDOUT_FILENO);
            close(pipeEnds[0]);
            close(pipeEnds[1]);
            execClient(line, trace);
        }
        close(pipeEnds[1]);
        fd = pipeEnds[0];
    }
    if (child < 0) throw std::runtime_error("fork");
    result.output = drain(fd);
    close(fd);
    waitFor(child, result);
    result.wallSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return result;
}

void copyInto(const std::string& source, const std::string& folder, const std::string& name) {
    fs::copy_file(source, fs::path(folder) / name, fs::copy_options::overwrite_existing);
}

} // namespace

ClientRun runClientCopy(const std::string& folder, const std::vector<std::string>& arguments) {
    copyInto(clientExecutablePath(), folder, clientFileName());
    return runExecutable(folder + "/" + clientFileName(), arguments, false);
}

ClientSandbox::ClientSandbox(const std::string& enginePath) {
    std::string pattern = (fs::temp_directory_path() / "tavi-client-XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp");
    folder_ = pattern;
    copyInto(clientExecutablePath(), folder_, clientFileName());
    if (!enginePath.empty()) copyInto(enginePath, folder_, engineModuleName());
}

ClientSandbox::~ClientSandbox() {
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

void ClientSandbox::writeFile(const std::string& name, const std::string& content) const {
    std::ofstream(path(name), std::ios::binary) << content;
}

std::string ClientSandbox::readFile(const std::string& name) const {
    std::ifstream in(path(name), std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

std::vector<std::string> ClientSandbox::engineLog() const {
    std::vector<std::string> lines;
    std::istringstream in(readFile("recording.log"));
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

ClientRun ClientSandbox::run(const std::vector<std::string>& arguments, bool onTerminal) const {
    return runExecutable(folder_ + "/" + clientFileName(), arguments, onTerminal);
}

ClientRun ClientSandbox::runTracingWine(const std::vector<std::string>& arguments, const std::string& channels) const {
    if (!windowsBuild()) throw std::logic_error("runTracingWine without a Windows build");
    const WineTrace trace{channels, path("wine-trace.txt")};
    ClientRun result = runExecutable(folder_ + "/" + clientFileName(), arguments, false, &trace);
    result.wineTrace = readFile("wine-trace.txt");
    return result;
}
