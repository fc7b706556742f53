#pragma once

#include <atomic>
#include <string>

#include <tam/tam.h>

// What is found out about a file.
struct Digest {
    unsigned int crc = 0; // CRC-32
    unsigned long long bytes = 0;
    unsigned long long lines = 0; // ends of lines: what follows the last one is none
};

// Digests the text file of that path in one pass; others may read it meanwhile, but not write it.
// status is cleared first. On failure the result covers what could be read. It is SPOOLER_E_LONG_LINE, what the library
// reports, or ERROR_OPERATION_ABORTED when is_stopping became true on the way.
Digest digest_file(const std::wstring& path, const std::atomic<bool>& is_stopping, tam::Tam_status& status);
