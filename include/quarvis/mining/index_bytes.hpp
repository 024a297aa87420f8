#pragma once

#include <span>
#include <stdexcept>
#include <string>

#include <quarvis/mining/history_index.hpp>

#pragma GCC visibility push(default)

/// \file
/// An index as bytes, so that it can be kept and its shards can be counted in other processes.
///
/// All numbers are little endian. A head of 80 bytes has the letters "QVINDEX", a zero byte, and
/// then as 64-bit numbers the version, the bytes of a time, the least count, the numbers of
/// transactions read, items, bytes of names, histories, transactions kept and occurrences. The
/// arrays follow, each filled up with zeros to a multiple of 8 bytes: where names begin (64-bit,
/// one more than there are items), the names, the counts of items, where the transactions of
/// histories begin (one more than there are histories), the times, where the items of transactions
/// begin (one more than there are transactions), and the items; 32-bit but for what is told, and
/// the times as wide as the head says.
///
/// The last 8 bytes are a checksum of all bytes before. It begins as their number. For every 8 of
/// them, as a number w, the checksum s becomes t xor (t >> 29), where t is
/// (s xor w) * 0x9e3779b97f4a7c15 modulo 2^64. Bytes that lack to the last 8 count as zeros.
namespace quarvis::mining {

/// Bytes that are no index, or a damaged one.
class IndexFormatError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The bytes of an index in the format above. Equal indexes give equal bytes on any machine.
std::string indexToBytes(const HistoryIndex& index);

/// The index that the bytes stand for. Throws `IndexFormatError` for anything that `indexToBytes`
/// does not write: every length, order and reference is checked, whatever the checksum says. The
/// counts may be those of a larger index, of which this is a slice, but not less than here.
HistoryIndex indexFromBytes(std::span<const char> bytes);

}  // namespace quarvis::mining

#pragma GCC visibility pop
