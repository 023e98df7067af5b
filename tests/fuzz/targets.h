// The fuzz targets: what is read from `input`, and what must hold whatever it is.
#pragma once

#include <cstdint>
#include <span>

using FuzzInput = std::span<const uint8_t>;

// configuration_targets.cpp: the three configuration files; "defaults" also goes over the command line.
void fuzz_defaults(FuzzInput input);
void fuzz_alias(FuzzInput input);
void fuzz_gap_defaults(FuzzInput input);

// reader_targets.cpp: matrices in both layouts, sequence files in both layouts, the codon table.
void fuzz_matrix_pir(FuzzInput input);
void fuzz_matrix_ncbi(FuzzInput input);
void fuzz_fasta(FuzzInput input);
void fuzz_pir(FuzzInput input);
void fuzz_codon(FuzzInput input);

// database_targets.cpp: a binary database (two bytes: length of the index file, low byte first; index file; sequence
// file), and the score list of a report.
void fuzz_binary_database(FuzzInput input);
void fuzz_score_list(FuzzInput input);

// search_targets.cpp: the vector scans against the scalar kernels on random problems; whole searches of random
// databases with random keys, whose reports must not depend on the kernels.
void fuzz_scan(FuzzInput input);
void fuzz_search(FuzzInput input);
