#pragma once

#include <span>
#include <stdexcept>
#include <string>

#include <quarvis/mining/history_index.hpp>

#pragma GCC visibility push(default)

/// \file
/// Writes an index to bytes and reads it back, so that it can be stored and its shards can be
/// counted in other processes.
///
/// All numbers are little endian. A header of 80 bytes comes first: the letters "QVINDEX", a zero
/// byte, and nine numbers of 64 bits, which are the version, the bytes of a time, the least count,
/// the number of transactions of the input, and the numbers of items, bytes of names, histories,
/// stored transactions and occurrences. The arrays follow, each padded with zeros to a multiple of
/// 8 bytes. Their numbers have 32 bits unless stated otherwise.
///
/// - where each name begins, and the end of the last (64 bits);
/// - the names;
/// - the counts of the items;
/// - where the transactions of each history begin, and the end of the last;
/// - the times, as wide as the header says;
/// - where the items of each transaction begin, and the end of the last;
/// - the items.
///
/// The last 8 bytes are a checksum s of all bytes before them. It starts as the number of these
/// bytes. Each 8 of the bytes, read as a number w, then change s to t xor (t >> 29), where t is (s
/// xor w) * 0x9e3779b97f4a7c15 modulo 2^64. The last group is padded with zeros.
namespace quarvis::mining {

/// Thrown for bytes that are not an index or are damaged.
class IndexFormatError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Writes an index in the format above. Equal indexes give equal bytes on any machine.
std::string indexToBytes(const HistoryIndex& index);

/// Reads an index in the format above. Throws `IndexFormatError` for bytes that `indexToBytes`
/// cannot have written: every length, order and reference is checked besides the checksum. An
/// item's count may be greater than the number of histories here that hold the item, because the
/// index may be a slice of a larger one, but not less.
HistoryIndex indexFromBytes(std::span<const char> bytes);

}  // namespace quarvis::mining

#pragma GCC visibility pop
