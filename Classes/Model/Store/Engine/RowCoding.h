#pragma once

#include <HabitraModel/Store/Checkpoint.h>
#include <HabitraModel/Store/EntityDescription.h>
#include <HabitraModel/Store/StoredValues.h>

/// The canonical encoding of a row: what checksums are taken over, and what history keeps of a row as it was before.
///
/// The attributes that are not at their default, in order of position. Of each: one byte, position × 4 + form; then by
/// form
///   0  integer (also truth values, moments and relationships): zigzag, 7 bits a byte, low ones first
///   1  double: 8 bytes, low ones first; minus zero is zero
///   2  text, 3  bytes: the length like an unsigned integer, then the content
/// An attribute that is appended later is at its default in every old row, so old encodings and checksums stay right.
namespace habitra {

/// Appends the encoding of those attributes of `object` that `which` holds, and gives the ones that are not at their
/// default. Traps on a number that is not finite.
AttributeSet encodeAttributes(const EntityDescription& entity, const void* object, AttributeSet which, Bytes& out);

/// Sets the attributes that `which` holds to what the encoding says, or to their default when it is silent. Gives false
/// when the encoding is damaged.
[[nodiscard]] bool decodeAttributes(const EntityDescription& entity, std::span<const std::uint8_t> encoded,
                                    AttributeSet which, void* object);

/// The XXH3 hash (64 bits) of the entity's number, the row's number and the encoding of all its attributes.
[[nodiscard]] std::int64_t rowChecksum(const EntityDescription& entity, const void* object);

/// The XXH3 hash (64 bits) of the task's number, the day and the fingerprint as zigzag integers, and the content with
/// its length before it.
[[nodiscard]] std::int64_t checkpointChecksum(ObjectID task, const Checkpoint& checkpoint);

/// The attributes that differ between two objects of an entity.
[[nodiscard]] AttributeSet differences(const EntityDescription& entity, const void* a, const void* b);

/// The attributes of an object that are not at their default.
[[nodiscard]] AttributeSet attributesWithValues(const EntityDescription& entity, const void* object);

/// Sets the attributes of `object` that `which` holds to those of `from`, an object of the same entity.
void assignAttributes(const EntityDescription& entity, AttributeSet which, void* object, void* from);

/// All attributes of an entity.
[[nodiscard]] AttributeSet allAttributes(const EntityDescription& entity);

}  // namespace habitra
