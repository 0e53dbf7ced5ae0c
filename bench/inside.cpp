// Times the program's parts one by one.
#include "bench/scratch.h"
#include "discover/search.h"
#include "engine/passes.h"
#include "engine/templates.h"
#include "platform/prefix/prefix_files.h"
#include "platform/prefix/prefix_system.h"
#include "ui/console/console_screen.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <random>

namespace fs = std::filesystem;

namespace {

// Templates of so many recognition lines in 60 sections or less, and a map of 2,000 lines, a third
// of which they recognise.
struct Sample {
  explicit Sample(std::size_t known) {
    std::mt19937 random(1);
    const std::size_t sections = std::min<std::size_t>(60, known);
    for (std::size_t s = 0; s < sections; ++s) {
      old_text += "section" + std::to_string(s) + "$2\r\n";
      new_text += "section" + std::to_string(s) + "$3\r\n\tname &\r\n\tvalue #\r\n\tadded 0\r\n";
      for (std::size_t i = s; i < known; i += sections)
        old_text += key(i) + "\r\n";
    }
    for (int i = 0; i < 667; ++i)
      map += key(random() % known) + " 12\r\n\t\tvalue 3\r\n\tnothing that is known\r\n";
  }

  static std::string key(std::size_t i) { return "\tkey" + std::to_string(i * 7919 % 10007); }

  std::string old_text = "GALAXY\r\n", new_text = "GALAXY\r\n", map = "GALAXY\r\nversion 9\r\n";
};

std::size_t range(const benchmark::State& state) {
  return static_cast<std::size_t>(state.range(0));
}

void splitting(benchmark::State& state) {
  const Sample sample(400);
  for (auto _ : state)
    benchmark::DoNotOptimize(LineArray::split(sample.map));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(sample.map.size()));
}

void loading(benchmark::State& state) {
  const Sample sample(range(state));
  for (auto _ : state)
    benchmark::DoNotOptimize(index_old("old", sample.old_text));
}

// All lines of the map in turn: one that is recognised, then two that are not.
void matching(benchmark::State& state) {
  const Sample sample(range(state));
  const OldTemplate old = index_old("old", sample.old_text);
  const LineArray lines = LineArray::split(sample.map);
  std::size_t line = 2;
  for (auto _ : state) {
    benchmark::DoNotOptimize(old.index.find(lines[line]));
    line = line + 1 < lines.size() ? line + 1 : 2;
  }
}

void rewriting(benchmark::State& state) {
  const Sample sample(range(state));
  const OldTemplate old = index_old("old", sample.old_text);
  const NewTemplate current = index_new("new", sample.new_text);
  const LineArray lines = LineArray::split(sample.map);
  for (auto _ : state)
    benchmark::DoNotOptimize(first_pass(old, current, lines));
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(lines.size()));
}

void reading_registry(benchmark::State& state) {
  const std::string value = R"(HKEY_LOCAL_MACHINE\Software\Wow6432Node\Orbwright\Path)";
  const Scratch scratch;
  state.counters["bytes"] =
      static_cast<double>(fs::file_size(scratch.machine.folder + "/system.reg"));
  for (auto _ : state) {
    PrefixSystem system(scratch.machine, "");
    benchmark::DoNotOptimize(system.reg_read(value));
  }
}

// So many maps, a hundred in a folder.
void searching(benchmark::State& state) {
  const Scratch scratch;
  for (std::size_t i = 0; i < range(state); ++i) {
    const fs::path folder = scratch.machine.folder + "/drive_c/maps/" + std::to_string(i / 100);
    fs::create_directory(folder);
    std::ofstream(folder / (std::to_string(i) + ".galaxy"));
  }
  PrefixFiles files(scratch.machine);
  PrefixSystem system(scratch.machine, "");
  ConsoleScreen screen(0);
  for (auto _ : state) {
    Form1 form(files, system, screen);
    std::vector<std::string> found{""};
    findfiles(form, "*.galaxy", "C:\\maps", found);
    benchmark::DoNotOptimize(found);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

// What the form keeps of a text box to which names are added one by one.
void appending(benchmark::State& state) {
  const Scratch scratch;
  PrefixFiles files(scratch.machine);
  PrefixSystem system(scratch.machine, "");
  ConsoleScreen screen(0);
  for (auto _ : state) {
    Form1 form(files, system, screen);
    for (std::size_t i = 0; i < range(state); ++i)
      form.Text1.append("The name of a map.galaxy\r\n");
    benchmark::DoNotOptimize(form.Text1.text());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

// What the file list does with a folder of so many maps.
void listing(benchmark::State& state) {
  const Scratch scratch;
  for (std::size_t i = 0; i < range(state); ++i)
    std::ofstream(scratch.machine.folder + "/drive_c/maps/Map " + std::to_string(i) + ".galaxy");
  PrefixFiles files(scratch.machine);
  PrefixSystem system(scratch.machine, "");
  ConsoleScreen screen(0);
  Form1 form(files, system, screen);
  for (auto _ : state)
    form.File1.set_path("C:\\maps");
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

}  // namespace

BENCHMARK(splitting);
BENCHMARK(loading)->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK(matching)->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK(rewriting)->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK(reading_registry);
BENCHMARK(searching)->RangeMultiplier(10)->Range(100, 100000)->Unit(benchmark::kMillisecond);
BENCHMARK(appending)->RangeMultiplier(10)->Range(10, 100000);
BENCHMARK(listing)->RangeMultiplier(10)->Range(10, 100000)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
