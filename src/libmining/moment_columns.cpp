#include "moment_columns.hpp"

#include <algorithm>
#include <span>

namespace quarvis::mining {

namespace {

/// The histories of an item are far apart in memory, so they are prefetched this many ahead.
constexpr std::size_t AHEAD = 8;

}  // namespace

std::size_t MomentColumns::Column::find(std::uint32_t of) const {
    if (isDense())
        return of;
    const std::uint32_t* const place = std::lower_bound(word, word + size, of);
    return place == word + size || *place != of ? size : static_cast<std::size_t>(place - word);
}

MomentColumns::MomentColumns(const Standings& standings)
    : m_standings(standings), m_numbers(standings.itemCount(), NONE) {}

void MomentColumns::m_clear() {
    for (const Draft& draft : m_drafts)
        m_numbers[at(draft.item)] = NONE;
    m_drafts.clear();
    m_columns.clear();
    m_indices.release({});
    m_bits.release({});
    m_presentBits.release({});
}

/// Chooses the histories of the first item that hold two partners or more, and finds the partners
/// in them.
void MomentColumns::m_choosePlaces(Rank first) {
    m_places.clear();
    m_hitsEnd.clear();
    std::size_t hits = 0;
    const std::span<const Standings::Place> places = m_standings.places(first);
    for (std::size_t i = 0; i < places.size(); ++i) {
        const Standings::Place& place = places[i];
        if (i + AHEAD < places.size())
            m_standings.prefetch(places[i + AHEAD].history, places[i + AHEAD].entry);
        const auto after =
            static_cast<std::uint32_t>(m_standings.endEntry(place.history) - place.entry);
        const std::size_t before = hits;
        for (std::uint32_t entry = 1; entry < after; ++entry) {
            const std::uint32_t number = m_numbers[at(m_standings.item(place.entry + entry))];
            m_hits[hits] = {number, entry};
            hits += number != NONE ? 1 : 0;
        }
        m_cost += after + 2;
        if (hits < before + 2) {
            hits = before;
            continue;
        }
        m_places.push_back(place);
        m_hitsEnd.push_back(static_cast<std::uint32_t>(hits));
    }
}

MomentColumns::Draft MomentColumns::m_draft(Rank item, std::size_t most, bool isDense) {
    Draft draft{item, most, nullptr, nullptr, nullptr, 0};
    if (!isDense)
        draft.word = m_indices.take(most);
    draft.standing = m_bits.take(most);
    if (m_standings.anyPresent())
        draft.present = m_presentBits.take(most);
    if (isDense) {
        draft.size = most;
        std::fill_n(draft.standing, most, Standing());
        if (draft.present != nullptr)
            std::fill_n(draft.present, most, 0);
    }
    return draft;
}

inline void MomentColumns::m_put(Draft& draft, const MomentWords::Field& field,
                                 const Standings::Masks& masks) {
    const std::uint64_t fresh = MomentWords::moved(masks.fresh, field);
    const std::uint64_t recent = MomentWords::moved(masks.recent(), field);
    if ((fresh | recent) == 0)
        return;
    std::size_t place = field.word;
    if (draft.word != nullptr) {
        if (draft.size == 0 || draft.word[draft.size - 1] != field.word) {
            draft.word[draft.size] = field.word;
            draft.standing[draft.size] = Standing();
            if (draft.present != nullptr)
                draft.present[draft.size] = 0;
            ++draft.size;
        }
        place = draft.size - 1;
    }
    draft.standing[place].fresh |= fresh;
    draft.standing[place].recent |= recent;
    if (draft.present != nullptr)
        draft.present[place] |= MomentWords::moved(masks.present, field);
}

void MomentColumns::fill(Rank first, std::span<const RuleCounter::Partner> partners) {
    m_clear();
    m_cost = 0;
    std::size_t hits = 1;  // one more than needed: each is written before it is known to be one
    for (const RuleCounter::Partner& partner : partners) {
        m_numbers[at(partner.item)] = static_cast<std::uint32_t>(m_drafts.size());
        m_drafts.push_back({partner.item, partner.histories, nullptr, nullptr, nullptr, 0});
        hits += partner.histories;
    }
    if (m_hitRoom < hits) {
        m_hits = std::make_unique_for_overwrite<Hit[]>(hits);
        m_hitRoom = hits;
    }
    m_choosePlaces(first);
    m_words.make(m_standings, m_places);
    const std::size_t words = m_words.words();
    Draft own = m_draft(first, words, true);
    for (Draft& draft : m_drafts) {
        // Each history of the item has at most `mostFields` fields.
        const std::size_t most = std::min(draft.most * m_words.mostFields(), words);
        draft = m_draft(draft.item, 2 * most >= words ? words : most, 2 * most >= words);
        m_cost += 2 * most >= words ? words : 1;
    }
    const std::vector<MomentWords::Field>& fields = m_words.fields();
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (i + AHEAD < fields.size()) {
            const Standings::Place& ahead = m_places[fields[i + AHEAD].place];
            m_standings.prefetch(ahead.history, ahead.entry);
        }
        const MomentWords::Field field = fields[i];
        const Standings::Place& place = m_places[field.place];
        const Standings::Masks masks = m_standings.masks(place.history, place.entry);
        m_put(own, field, masks);
        const std::size_t begin = field.place == 0 ? 0 : m_hitsEnd[field.place - 1];
        const std::size_t end = m_hitsEnd[field.place];
        for (std::size_t hit = begin; hit < end; ++hit)
            m_put(m_drafts[m_hits[hit].number], field, masks.after(m_hits[hit].after));
        m_cost += 3 * (end - begin) + 10;
    }
    const auto column = [](const Draft& draft) {
        return Column{draft.word, draft.standing, draft.present, draft.size};
    };
    m_first = column(own);
    for (const Draft& draft : m_drafts)
        m_columns.push_back(column(draft));
}

}  // namespace quarvis::mining
