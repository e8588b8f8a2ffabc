#include "Playlist/PlaylistEntry.h"

#include <QHashFunctions>

namespace {

// An optional field hashes as a presence flag followed by the value when present, so an absent
// field and a present empty one hash differently.
template <typename T>
size_t combineOptional(QtPrivate::QHashCombine combine, size_t seed, const std::optional<T> &field)
{
    seed = combine(seed, field.has_value() ? 1 : 0);
    return field ? combine(seed, *field) : seed;
}

} // namespace

size_t qHash(const PlaylistEntry &entry, size_t seed)
{
    QtPrivate::QHashCombine combine;
    seed = combine(seed, entry.id);
    seed = combine(seed, entry.name);
    seed = combine(seed, entry.url);
    seed = combineOptional(combine, seed, entry.logoURL);
    seed = combineOptional(combine, seed, entry.groupTitle);
    return combineOptional(combine, seed, entry.countryCode);
}
