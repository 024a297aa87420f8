#include "oracle/every_table.hpp"

namespace oracle {

std::vector<History> allHistories(const std::vector<Time>& times,
                                  const std::vector<std::string>& items) {
    std::vector<History> histories = {{}};
    for (const Time time : times)
        for (std::size_t shorter = histories.size(); shorter-- > 0;)
            for (unsigned subset = 0; subset < 1U << items.size(); ++subset) {
                History history = histories[shorter];
                auto& transaction = history[time];
                for (std::size_t i = 0; i < items.size(); ++i)
                    if ((subset >> i & 1U) != 0)
                        transaction.insert(items[i]);
                histories.push_back(history);
            }
    histories.erase(histories.begin());
    return histories;
}

namespace {

class Walk {
  public:
    Walk(const std::vector<History>& histories, const std::function<bool(const Table&)>& visit)
        : m_histories(histories), m_visit(visit) {}

    bool goOn(std::size_t number, std::size_t first) {
        ++m_tables;
        if (!m_visit(m_table))
            return false;
        for (std::size_t i = first; number > 0 && i < m_histories.size(); ++i) {
            m_table.histories.push_back(m_histories[i]);
            if (!goOn(number - 1, i))
                return false;
            m_table.histories.pop_back();
        }
        return true;
    }

    std::size_t tables() const { return m_tables; }

  private:
    const std::vector<History>& m_histories;
    const std::function<bool(const Table&)>& m_visit;
    Table m_table;
    std::size_t m_tables = 0;
};

}  // namespace

std::size_t forEveryTable(const std::vector<History>& histories, std::size_t number,
                          const std::function<bool(const Table&)>& visit) {
    Walk walk(histories, visit);
    walk.goOn(number, 0);
    return walk.tables();
}

}  // namespace oracle
