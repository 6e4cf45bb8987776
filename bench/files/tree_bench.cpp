// Times removeDirRecursive against "cmd /c rd /s /q" and IsFolderEmpty against the full listing it
// answers for. Arguments: <folder holding the prepared trees> <runs>. The folder holds remove-N and
// rd-N (one copy of the large tree per run and per way of deleting), full (the large tree) and bare
// (the same folders without files).
#include "files/file_tree.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace {

double Seconds(const std::function<void()>& work) {
    LARGE_INTEGER frequency, start, end;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&start);
    work();
    QueryPerformanceCounter(&end);
    return static_cast<double>(end.QuadPart - start.QuadPart) / frequency.QuadPart;
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

bool RunAndWait(std::wstring commandLine) {
    STARTUPINFOW startupInfo{};
    startupInfo.cb = sizeof(startupInfo);
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW,
                        nullptr, nullptr, &startupInfo, &process))
        return false;
    WaitForSingleObject(process.hProcess, INFINITE);
    CloseHandle(process.hProcess);
    CloseHandle(process.hThread);
    return true;
}

// The answer IsFolderEmpty is defined by: the whole listing, then whether it is empty.
bool EmptyByFullListing(const std::wstring& path) {
    PathList list;
    return ListTree(path, list, L"*", true) && list.empty();
}

void Report(const char* what, const std::vector<double>& ours, const std::vector<double>& theirs,
            const char* ourName, const char* theirName) {
    const double a = Median(ours), b = Median(theirs);
    std::printf("%-34s %-20s %9.1f ms   %-22s %9.1f ms   ratio %.3f\n", what, ourName, a * 1000,
                theirName, b * 1000, a / b);
}

} // namespace

int wmain(int argc, wchar_t** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: tree_bench <folder> <runs>\n");
        return 2;
    }
    const std::wstring root = argv[1];
    const int runs = std::max(1, _wtoi(argv[2]));
    int wrong = 0;

    std::vector<double> ours, rd, cmdStart;
    for (int run = 0; run < runs; ++run) {
        const std::wstring mine = root + L"\\remove-" + std::to_wstring(run);
        const std::wstring other = root + L"\\rd-" + std::to_wstring(run);
        bool removed = false;
        ours.push_back(Seconds([&] { removed = removeDirRecursive(mine); }));
        rd.push_back(Seconds([&] { RunAndWait(L"cmd /c rd /s /q \"" + other + L"\""); }));
        cmdStart.push_back(Seconds([&] { RunAndWait(L"cmd /c exit"); }));
        if (!removed || FileExists(mine) || FileExists(other)) {
            std::fprintf(stderr, "run %d: a tree was not removed\n", run);
            ++wrong;
        }
    }
    std::vector<double> rdWithoutStart;
    for (int run = 0; run < runs; ++run)
        rdWithoutStart.push_back(rd[run] - cmdStart[run]);

    std::vector<double> early, listed, bareEarly, bareListed;
    const std::wstring full = root + L"\\full";
    const std::wstring bare = root + L"\\bare";
    for (int run = 0; run < runs; ++run) {
        bool a = true, b = true, c = false, d = false;
        early.push_back(Seconds([&] { a = IsFolderEmpty(full); }));
        listed.push_back(Seconds([&] { b = EmptyByFullListing(full); }));
        bareEarly.push_back(Seconds([&] { c = IsFolderEmpty(bare); }));
        bareListed.push_back(Seconds([&] { d = EmptyByFullListing(bare); }));
        if (a || b || !c || !d) {
            std::fprintf(stderr, "run %d: IsFolderEmpty answered otherwise than the listing\n",
                         run);
            ++wrong;
        }
    }

    std::printf("medians of %d runs; ratio = ours / theirs (below 1: ours is faster)\n", runs);
    Report("delete 20000 files, 2000 folders", ours, rd, "removeDirRecursive", "cmd /c rd /s /q");
    Report("  the same, cmd start-up taken off", ours, rdWithoutStart, "removeDirRecursive",
           "rd alone");
    Report("empty? tree with files", early, listed, "IsFolderEmpty", "full listing");
    Report("empty? same folders, no files", bareEarly, bareListed, "IsFolderEmpty", "full listing");
    std::printf("cmd /c exit alone: %.1f ms\n", Median(cmdStart) * 1000);
    return wrong == 0 ? 0 : 1;
}
