// Running a program of the build as a child, its output kept in a file, as a user runs it.
#pragma once
#include <filesystem>
#include <string>
#include <vector>

namespace bench {

// Runs `arguments` with its standard output and error in `output`; the exit status, or 128 and
// the signal. Where `cpuSeconds` is given it receives the processor time the child took, user
// and system. A child that cannot be started or waited for ends the benchmark.
int runProcess(const std::vector<std::string>& arguments, const std::filesystem::path& output,
               double* cpuSeconds = nullptr);

std::string readText(const std::filesystem::path& path);

} // namespace bench
