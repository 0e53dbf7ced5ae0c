// Times the window: its start, and its boxes and lists as the names in them grow.
#include "bench/scratch.h"
#include "platform/prefix/prefix_files.h"
#include "platform/prefix/prefix_system.h"
#include "ui/handlers.h"
#include "ui/qt/main_window.h"

#include <benchmark/benchmark.h>

#include <QApplication>

namespace {

// A machine in whose folders so many maps and subfolders seem to be.
struct CrowdedFiles : PrefixFiles {
  using PrefixFiles::PrefixFiles;

  Result<Listing> read_folder(const std::string&, std::string_view) override {
    Listing listing;
    for (int i = 0; i < 2 * crowd; ++i)
      listing.entries.push_back({"The name of map " + std::to_string(i), i < crowd, false});
    return listing;
  }

  int crowd = 0;
};

struct Window {
  Window() { screen.open(form); }

  Scratch scratch;
  CrowdedFiles files{scratch.machine};
  PrefixSystem system{scratch.machine, ""};
  MainWindow screen;
  Form1 form{files, system, screen};
};

// From nothing to the window that is painted and waits for its user, in a process that has loaded
// Qt already.
void opening_window(benchmark::State& state) {
  const Scratch scratch;
  for (auto _ : state) {
    PrefixFiles files(scratch.machine);
    PrefixSystem system(scratch.machine, "");
    MainWindow screen;
    Form1 form(files, system, screen);
    screen.open(form);
    load_form(form);
    screen.process_messages();
  }
}

void filling_box(benchmark::State& state) {
  Window window;
  load_form(window.form);
  for (auto _ : state) {
    window.form.Text1.set_text("");
    for (int i = 0; i < state.range(0); ++i)
      window.form.Text1.append("The name of a map.galaxy\r\n");
    window.screen.process_messages();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void filling_lists(benchmark::State& state) {
  Window window;
  load_form(window.form);
  window.files.crowd = static_cast<int>(state.range(0));
  bool other = false;
  for (auto _ : state) {
    other = !other;
    benchmark::DoNotOptimize(window.form.Dir1.set_path(other ? "C:\\maps" : "C:\\"));
    window.screen.process_messages();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0) * 2);
}

}  // namespace

BENCHMARK(opening_window)->Unit(benchmark::kMillisecond);
BENCHMARK(filling_box)->RangeMultiplier(10)->Range(10, 100000)->Unit(benchmark::kMillisecond);
BENCHMARK(filling_lists)->RangeMultiplier(10)->Range(10, 100000)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
