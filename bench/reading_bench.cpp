// Reading and encoding a text database: bytes of the file per second. The file is written to the temporary
// directory first, so that it comes from the page cache.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <random>
#include <string>

#include "seq/alphabet.h"
#include "seq/matrix.h"
#include "seq/sequence_file.h"

namespace zelvan {
namespace {

constexpr std::size_t FILE_SIZE = std::size_t{64} << 20;

// A FASTA file of random proteins: lines of 60, mean length 350, headers as long as those of UniProt.
struct DatabaseFile {
  std::filesystem::path path = std::filesystem::temp_directory_path() / "zelvan_reading_bench.fasta";

  DatabaseFile() {
    std::mt19937 random(1);
    std::string text;
    for (int number = 0; text.size() < FILE_SIZE; ++number) {
      text +=
          ">sp|P" + std::to_string(number) + "|PROT_SPECI A protein of random residues OS=Species PE=1 SV=1";
      const std::size_t length = 50 + random() % 600;
      for (std::size_t i = 0; i < length; ++i) {
        if (i % 60 == 0) text += '\n';
        text += "ARNDCQEGHILKMFPSTWYV"[random() % 20];
      }
      text += '\n';
    }
    FILE* const file = std::fopen(path.c_str(), "w");
    std::fwrite(text.data(), 1, text.size(), file);
    std::fclose(file);
  }
  ~DatabaseFile() { std::filesystem::remove(path); }
};

ScoreMatrix* matrix_of(Params& p) {
  p.MATRIX_DIR = ZELVAN_SOURCE_DIR "/data/matrices";
  p.MATRIX_FILE.name = "BLOSUM62";
  p.MATRIX_FORMAT = 1;
  p.PRECISION = 100;
  p.GAP_CHARACTER = ' ';
  p.FGAP_CHARACTER = '^';
  p.IGAP_CHARACTER = ':';
  p.STOP_CHARACTER = '!';
  return getmat(&p);
}

void read_database(benchmark::State& state, bool encode) {
  const DatabaseFile file;
  Params p;
  const ScoreMatrix* const matrix = matrix_of(p);
  p.DB_FILE.name = file.path.c_str();
  p.DB_FORMAT = 1;
  p.MAX_NSEQ = p.MAX_SEQ_LEN = 1'000'000;
  for (auto _ : state) {
    TextDatabase database;
    read_text_database(database, false, &p);
    if (encode) encode_sequences(database.seqs.data(), static_cast<int32_t>(database.seqs.size()), *matrix);
    benchmark::DoNotOptimize(database.seqs.data());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(std::filesystem::file_size(file.path)));
}

void Read(benchmark::State& state) {
  read_database(state, false);
}
void ReadAndEncode(benchmark::State& state) {
  read_database(state, true);
}
BENCHMARK(Read)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadAndEncode)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace zelvan
