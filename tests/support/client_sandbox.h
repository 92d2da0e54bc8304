// Runs the real TaviClient executable in a folder of its own, beside a chosen engine module;
// with TAVI_TEST_WINDOWS_BUILD set, the Windows client of that build under wine.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

// A path of this machine as the client under test sees it: unchanged on Linux; under wine, on
// the drive that wine maps to the root of the file system, with backslashes.
std::string clientSpelling(const std::string& path);
// The file names of the client and of the engine module it loads, on the platform under test.
const char* clientFileName();
const char* engineModuleName();
// Whether the client under test is the Windows one, run under wine.
bool underWine();

struct ClientRun {
    int exitStatus = -1; // as the shell sees it: 0..255
    std::string output;  // standard output, raw bytes
    uint64_t peakResidentKiB = 0;
    double wallSeconds = 0;
    std::string wineTrace; // wine's diagnostics, from runTracingWine alone
};

class ClientSandbox {
  public:
    // `enginePath` empty: no engine module in the folder.
    explicit ClientSandbox(const std::string& enginePath);
    ~ClientSandbox();
    ClientSandbox(const ClientSandbox&) = delete;
    ClientSandbox& operator=(const ClientSandbox&) = delete;

    const std::string& folder() const { return folder_; }
    std::string path(const std::string& name) const { return folder_ + "/" + name; }
    // The path of `name` in the folder as the client under test spells it.
    std::string clientPath(const std::string& name) const { return clientSpelling(path(name)); }
    void writeFile(const std::string& name, const std::string& content) const;
    std::string readFile(const std::string& name) const;
    // The engine's log, one entry per line.
    std::vector<std::string> engineLog() const;
    void writeEngineScript(const std::string& script) const { writeFile("recording.script", script); }

    // On a pseudo-terminal the client also writes its console title escapes.
    ClientRun run(const std::vector<std::string>& arguments, bool onTerminal = false) const;
    // Under wine only: the run with wine's diagnostics of `channels` (a WINEDEBUG value) kept in
    // `wineTrace`, to see what the client handed the system.
    ClientRun runTracingWine(const std::vector<std::string>& arguments, const std::string& channels) const;

  private:
    std::string folder_;
};

std::string recordingEnginePath();
std::string previewEnginePath();
std::string invalidEnginePath();
std::string clientExecutablePath();
// The engine built for the Microsoft C++ ABI: only a Windows build has it, and only where clang
// made it. Empty otherwise.
std::string msvcAbiEnginePath();

// Copies the client (not a link) to `folder` and runs it from there.
ClientRun runClientCopy(const std::string& folder, const std::vector<std::string>& arguments);
