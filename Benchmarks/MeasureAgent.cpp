#include "Benchmarks/ItemWatcher.h"
#include "Benchmarks/ScreenProbe.h"
#include "Benchmarks/WakeUps.h"
#include "Platform/Foundation/FatalError.h"
#include "Tests/Support/ProcessFigures.h"
#include "Tests/Support/VirtualDesktop.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>
#include <vector>

/// Measures the agent against the least that a Qt program with an icon can be, in pairs of runs on a desktop
/// of their own: start-up until the item registers, private memory, wake-ups while idle, and the time from a
/// click on the icon until the popover is painted.
namespace {

using namespace velloren;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int pairs = 15;
constexpr auto settling = 2s;
constexpr auto idle = 30s;
constexpr std::uint32_t popoverGrey = 0xececec;
constexpr QPoint popoverPixel = VirtualDesktop::icon + QPoint(0, 28);

const std::string binaries = VELLOREN_BINARIES;

struct Figures {
    std::vector<double> startUp; ///< milliseconds
    std::vector<double> memory;  ///< KiB
    std::vector<double> click;   ///< milliseconds
    long wakeUps = 0;
};

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void end(Process& process) {
    process.signal(SIGTERM);
    process.wait();
}

void measureStart(VirtualDesktop& desktop, ItemWatcher& watcher, const std::string& program,
                  Figures& figures) {
    const auto start = Clock::now();
    const auto process = desktop.start(binaries + "/" + program);
    watcher.waitForItem();
    figures.startUp.push_back(Milliseconds(Clock::now() - start).count());
    std::this_thread::sleep_for(settling);
    figures.memory.push_back(double(privateMemoryOf(process->pid())));
    end(*process);
}

void measureClick(ScreenProbe& probe, Figures& figures) {
    const auto isShown = [&] { return probe.colorAt(popoverPixel.x(), popoverPixel.y()) == popoverGrey; };
    const auto start = Clock::now();
    probe.click();
    while (!isShown()) {
        if (Clock::now() - start > 10s)
            fatalError("nothing was painted after a click");
    }
    figures.click.push_back(Milliseconds(Clock::now() - start).count());
    std::this_thread::sleep_for(300ms);
    probe.click();
    while (isShown())
        std::this_thread::sleep_for(10ms);
    std::this_thread::sleep_for(300ms);
}

void measureRunning(VirtualDesktop& desktop, ScreenProbe& probe, const std::string& program,
                    Figures& figures) {
    const auto process = desktop.start(binaries + "/" + program);
    VirtualDesktop::waitUntil([&] { return desktop.itemCount() == 1; });
    probe.moveTo(VirtualDesktop::icon.x(), VirtualDesktop::icon.y());
    std::this_thread::sleep_for(settling);
    for (int count = 0; count < pairs; ++count)
        measureClick(probe, figures);
    const VoluntarySwitches before = voluntarySwitchesOf(process->pid());
    std::this_thread::sleep_for(idle);
    figures.wakeUps = wakeUpsBetween(before, voluntarySwitchesOf(process->pid()));
    end(*process);
    VirtualDesktop::waitUntil([&] { return desktop.itemCount() == 0; });
}

/// The first click has to load fonts and much else that the later ones find.
std::vector<double> firstOf(const std::vector<double>& clicks) {
    return {clicks.at(0)};
}

std::vector<double> laterOf(const std::vector<double>& clicks) {
    return {clicks.begin() + 1, clicks.end()};
}

void print(const char* what, const char* unit, const std::vector<double>& agent,
           const std::vector<double>& minimal) {
    std::vector<double> ratios;
    for (std::size_t run = 0; run < std::min(agent.size(), minimal.size()); ++run)
        ratios.push_back(agent[run] / minimal[run]);
    std::printf("%-34s %9.1f %s %9.1f %s %9.2f\n", what, median(agent), unit, median(minimal), unit,
                median(ratios));
}

} // namespace

int main() {
    VirtualDesktop desktop;
    desktop.bus().addService("com.velloren.velloren-mac.agent", binaries + "/velloren-agent");
    desktop.start(binaries + "/velloren-main", {"--make-demonstration-store"})->wait();

    Figures agent;
    Figures minimal;
    ScreenProbe probe;
    measureRunning(desktop, probe, "velloren-menu", agent);
    measureRunning(desktop, probe, "minimal-tray", minimal);
    desktop.stopPanel();
    ItemWatcher watcher;
    for (int count = 0; count < pairs; ++count) {
        measureStart(desktop, watcher, "velloren-menu", agent);
        measureStart(desktop, watcher, "minimal-tray", minimal);
    }

    std::printf("%-34s %12s %12s %9s\n", "medians of pairs", "agent", "minimal", "ratio");
    print("start-up to the registered item", "ms ", agent.startUp, minimal.startUp);
    print("private memory", "KiB", agent.memory, minimal.memory);
    print("first click to painted popover", "ms ", firstOf(agent.click), firstOf(minimal.click));
    print("later clicks to painted popover", "ms ", laterOf(agent.click), laterOf(minimal.click));
    std::printf("%-34s %9ld     %9ld\n", "wake-ups in 30 idle seconds", agent.wakeUps, minimal.wakeUps);
}
