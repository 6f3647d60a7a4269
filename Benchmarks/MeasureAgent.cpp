#include "Benchmarks/ItemWatcher.h"
#include "Benchmarks/MeetingStores.h"
#include "Benchmarks/ScreenProbe.h"
#include "Benchmarks/WakeUps.h"
#include "Platform/Foundation/FatalError.h"
#include "Tests/Support/ProcessFigures.h"
#include "Tests/Support/VirtualDesktop.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <thread>
#include <vector>

/// Measures the agent against the least that a Qt program with an icon can be, in pairs of runs on a desktop
/// of their own: start-up until the item registers, private memory, wake-ups while idle, and the time from a
/// click on the icon until the popover is painted, the very first one and later ones, with several stores.
namespace {

using namespace velloren;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int usualRounds = 5;
constexpr int startsOfRound = 8;
constexpr int clicksOfRound = 5;
constexpr auto breath = 300ms;
constexpr auto settling = 2s;
constexpr auto settled = 6s; // what starting or a click took was given back by then
constexpr auto idle = 30s;
constexpr auto glance = 500us; // between two looks at the screen, which the server has to answer as well
constexpr std::uint32_t popoverGrey = 0xececec;
constexpr QPoint popoverPixel = VirtualDesktop::icon + QPoint(0, 28);

const std::string binaries = VELLOREN_BINARIES;

using Kind = MeetingStores::Kind;

struct Figures {
    std::vector<double> startUp;                           ///< milliseconds
    std::vector<double> memory;                            ///< KiB
    std::vector<double> written;                           ///< KiB, of that
    std::map<Kind, std::vector<double>> memoryBesidePanel; ///< KiB; the panel asked for icon and menu
    std::map<Kind, std::vector<double>> firstClick;        ///< milliseconds
    std::map<Kind, std::vector<double>> laterClick;        ///< milliseconds
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
    std::this_thread::sleep_for(breath);
    end(*process);
}

void measureMemory(VirtualDesktop& desktop, ItemWatcher& watcher, const std::string& program,
                   Figures& figures) {
    const auto process = desktop.start(binaries + "/" + program);
    watcher.waitForItem();
    std::this_thread::sleep_for(settled);
    figures.memory.push_back(double(privateMemoryOf(process->pid())));
    figures.written.push_back(double(writtenMemoryOf(process->pid())));
    end(*process);
}

/// Milliseconds from a click until the popover is painted; it is closed again afterwards.
double measureClick(ScreenProbe& probe) {
    const auto isShown = [&] { return probe.colorAt(popoverPixel.x(), popoverPixel.y()) == popoverGrey; };
    const auto start = Clock::now();
    probe.click();
    while (!isShown()) {
        if (Clock::now() - start > 10s)
            fatalError("nothing was painted after a click");
        std::this_thread::sleep_for(glance);
    }
    const double taken = Milliseconds(Clock::now() - start).count();
    std::this_thread::sleep_for(breath);
    probe.click();
    while (isShown())
        std::this_thread::sleep_for(10ms);
    std::this_thread::sleep_for(breath);
    return taken;
}

/// A program beside the panel, for as long as this lives.
class Running {
  public:
    Running(VirtualDesktop& desktop, ScreenProbe& probe, const std::string& program)
        : desktop(desktop), process(desktop.start(binaries + "/" + program)) {
        VirtualDesktop::waitUntil([&] { return desktop.itemCount() == 1; });
        probe.moveTo(VirtualDesktop::icon.x(), VirtualDesktop::icon.y());
        std::this_thread::sleep_for(settling);
    }

    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

    ~Running() {
        end(*process);
        VirtualDesktop::waitUntil([&] { return desktop.itemCount() == 0; });
    }

    [[nodiscard]] pid_t pid() const { return process->pid(); }

  private:
    VirtualDesktop& desktop;
    std::unique_ptr<Process> process;
};

void measureFirstClick(VirtualDesktop& desktop, ScreenProbe& probe, const std::string& program, Kind kind,
                       Figures& figures) {
    const Running running(desktop, probe, program);
    std::this_thread::sleep_for(settled);
    figures.memoryBesidePanel[kind].push_back(double(privateMemoryOf(running.pid())));
    figures.firstClick[kind].push_back(measureClick(probe));
}

void measureLaterClicks(VirtualDesktop& desktop, ScreenProbe& probe, const std::string& program,
                        const MeetingStores& stores, Figures& figures) {
    const Running running(desktop, probe, program);
    measureClick(probe);
    for (int count = 0; count < clicksOfRound; ++count) {
        for (const Kind kind : {Kind::Latin, Kind::OtherScripts, Kind::ManyUpcoming, Kind::ManyPast}) {
            stores.use(kind);
            figures.laterClick[kind].push_back(measureClick(probe));
        }
    }
}

void measureIdle(VirtualDesktop& desktop, ScreenProbe& probe, const std::string& program, Figures& figures) {
    const Running running(desktop, probe, program);
    measureClick(probe);
    std::this_thread::sleep_for(settled);
    const VoluntarySwitches before = voluntarySwitchesOf(running.pid());
    std::this_thread::sleep_for(idle);
    figures.wakeUps = wakeUpsBetween(before, voluntarySwitchesOf(running.pid()));
}

void print(const char* what, const char* unit, const std::vector<double>& agent,
           const std::vector<double>& minimal) {
    std::vector<double> ratios;
    for (std::size_t run = 0; run < std::min(agent.size(), minimal.size()); ++run)
        ratios.push_back(agent[run] / minimal[run]);
    std::printf("%-42s %9.1f %s %9.1f %s %9.2f\n", what, median(agent), unit, median(minimal), unit,
                median(ratios));
}

} // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : usualRounds;
    VirtualDesktop desktop;
    desktop.bus().addService("com.velloren.velloren-mac.agent", binaries + "/velloren-agent");
    const MeetingStores stores;

    Figures agent;
    Figures minimal;
    const std::array programs{std::pair("velloren-menu", &agent), std::pair("minimal-tray", &minimal)};
    ScreenProbe probe;
    for (int round = 0; round < rounds; ++round) {
        for (const Kind kind : {Kind::Latin, Kind::OtherScripts}) {
            stores.use(kind);
            for (const auto& [program, figures] : programs)
                measureFirstClick(desktop, probe, program, kind, *figures);
        }
        for (const auto& [program, figures] : programs)
            measureLaterClicks(desktop, probe, program, stores, *figures);
    }
    for (const auto& [program, figures] : programs)
        measureIdle(desktop, probe, program, *figures);
    desktop.stopPanel();
    ItemWatcher watcher;
    for (int count = 0; count < rounds * startsOfRound; ++count) {
        for (const auto& [program, figures] : programs)
            measureStart(desktop, watcher, program, *figures);
    }
    for (int round = 0; round < rounds; ++round) {
        for (const auto& [program, figures] : programs)
            measureMemory(desktop, watcher, program, *figures);
    }

    std::printf("%-42s %12s %12s %9s\n", "medians of pairs", "agent", "minimal", "ratio");
    print("start-up to the registered item", "ms ", agent.startUp, minimal.startUp);
    print("private memory", "KiB", agent.memory, minimal.memory);
    print("of it written", "KiB", agent.written, minimal.written);
    const auto printOf = [&](Kind kind, const char* what, const char* unit, auto values) {
        print(what, unit, (agent.*values)[kind], (minimal.*values)[kind]);
    };
    constexpr auto memory = &Figures::memoryBesidePanel;
    constexpr auto first = &Figures::firstClick;
    constexpr auto later = &Figures::laterClick;
    printOf(Kind::Latin, "beside a panel, three Latin titles", "KiB", memory);
    printOf(Kind::OtherScripts, "beside a panel, Chinese, Arabic and emoji", "KiB", memory);
    printOf(Kind::Latin, "first click, three Latin titles", "ms ", first);
    printOf(Kind::OtherScripts, "first click, Chinese, Arabic and emoji", "ms ", first);
    printOf(Kind::Latin, "later click, three Latin titles", "ms ", later);
    printOf(Kind::OtherScripts, "later click, Chinese, Arabic and emoji", "ms ", later);
    printOf(Kind::ManyUpcoming, "later click, a million upcoming meetings", "ms ", later);
    printOf(Kind::ManyPast, "later click, a million past meetings", "ms ", later);
    std::printf("%-42s %9ld     %9ld\n", "wake-ups in 30 idle seconds", agent.wakeUps, minimal.wakeUps);
}
