#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <system_error>

#include <nanobind/nanobind.h>
#include <nanobind/stl/optional.h>
#include <nanobind/stl/shared_ptr.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/variant.h>
#include <nanobind/stl/vector.h>

#include <quarvis/mining/mine.hpp>

#include "arrays.hpp"
#include "derived_rules.hpp"
#include "found.hpp"
#include "order_test.hpp"
#include "questions.hpp"
#include "rows.hpp"
#include "set_extensions.hpp"
#include "shards.hpp"
#include "watch.hpp"

/// \file
/// The module quarvis._engine gives the Python package access to the engine, by numbers and
/// columns. It checks only what memory safety needs. The package checks everything else and words
/// the messages for users.

namespace {

using namespace binding;  // NOLINT(google-build-using-namespace): the file only lists its members
using quarvis::mining::BudgetExceeded;
using quarvis::mining::HistoryIndex;
using quarvis::mining::MiningOptions;
using quarvis::mining::Rank;
using quarvis::mining::Splits;

void addErrors(nb::module_& module) {
    const nb::object exceeded = nb::exception<BudgetExceeded>(module, "BudgetExceeded");
    nb::register_exception_translator(
        [](const std::exception_ptr& error, void* type) {
            try {
                std::rethrow_exception(error);
            } catch (const BudgetExceeded& reached) {
                const nb::tuple arguments = nb::make_tuple(
                    reached.what(), reached.limit(), reached.levels(), reached.advisedCount());
                PyErr_SetObject(static_cast<PyObject*>(type), arguments.ptr());
            } catch (const std::system_error& failure) {
                errno = failure.code().value();
                PyErr_SetFromErrno(PyExc_OSError);
            }
        },
        exceeded.ptr());
}

void addWatch(nb::module_& module) {
    nb::enum_<BudgetExceeded::Limit>(module, "Limit")
        .value("LEVELS", BudgetExceeded::Limit::LEVELS)
        .value("SETS", BudgetExceeded::Limit::SETS)
        .value("BYTES", BudgetExceeded::Limit::BYTES)
        .value("TIME", BudgetExceeded::Limit::TIME);
    nb::class_<Watch>(module, "Watch", "Progress, signals and the budget of a run.")
        .def(
            "__init__",
            [](Watch* watch, nb::object progress, std::int64_t nanoseconds, std::size_t sets,
               std::size_t bytes) {
                quarvis::mining::Budget budget;
                budget.sets = sets;
                budget.bytes = bytes;
                budget.time = std::chrono::nanoseconds(nanoseconds);
                new (watch) Watch(std::move(progress), budget);
            },
            nb::arg("progress").none() = nb::none(), nb::arg("nanoseconds") = 0,
            nb::arg("sets") = 0, nb::arg("bytes") = 0);
}

void addInput(nb::module_& module) {
    nb::class_<HistoryIndex>(module, "Index", "Histories with the items that are frequent.")
        .def_prop_ro("history_count", &HistoryIndex::historyCount)
        .def_prop_ro("item_count", &HistoryIndex::itemCount)
        .def_prop_ro("transaction_count", &HistoryIndex::transactionCount)
        .def_prop_ro("min_count", &HistoryIndex::minCount)
        .def_prop_ro("memory", &HistoryIndex::memory)
        .def(
            "names",
            [](const HistoryIndex& index) {
                Strings names;
                for (std::uint32_t rank = 0; rank < index.itemCount(); ++rank)
                    names.add(index.name(Rank{rank}));
                return toPython(std::move(names));
            },
            "The names by rank, as offsets and bytes.")
        .def(
            "counts",
            [](const HistoryIndex& index) {
                std::vector<std::uint32_t> counts;
                for (std::uint32_t rank = 0; rank < index.itemCount(); ++rank)
                    counts.push_back(index.count(Rank{rank}));
                return arrayOf(std::move(counts));
            },
            "The number of histories that hold each item, by rank.");
    nb::class_<Rows>(module, "Rows", "Rows as columns of codes.")
        .def(nb::init<Column<std::uint32_t>, TimeColumn, Column<std::uint32_t>, std::size_t,
                      const Column<std::int64_t>&, const Column<std::uint8_t>&>(),
             nb::arg("entities"), nb::arg("times"), nb::arg("items"), nb::arg("histories"),
             nb::arg("name_offsets"), nb::arg("name_bytes"))
        .def("index", &Rows::index, nb::arg("min_count"), nb::arg("watch"),
             "The index of the items that are in at least this many histories.")
        .def("shard", &Rows::shard, "A shard of all items.");
    module.attr("NO_ITEM") = static_cast<std::uint32_t>(quarvis::mining::NO_ITEM);
    module.def("read_transactions", &readTransactions, nb::arg("path"),
               "The columns of a transaction file, read as the tool does.");
}

void addRuns(nb::module_& module) {
    nb::enum_<Splits>(module, "Splits").value("RUNS", Splits::RUNS).value("ALL", Splits::ALL);
    nb::class_<MiningOptions>(module, "Options", "The settings of a run; 0 means no bound.")
        .def(nb::init<>())
        .def_rw("min_count", &MiningOptions::minCount)
        .def_rw("max_size", &MiningOptions::maxSize)
        .def_rw("window", &MiningOptions::window)
        .def_rw("splits", &MiningOptions::splits)
        .def_rw("threads", &MiningOptions::threads)
        .def(
            "set_thresholds",
            [](MiningOptions& options, double support, double confidence, double lift,
               double conviction) {
                options.thresholds = {support, confidence, lift, conviction};
            },
            nb::arg("support"), nb::arg("confidence"), nb::arg("lift"), nb::arg("conviction"));
    nb::class_<Found>(module, "Found", "The result of a run, as ranks of its index.")
        .def_prop_ro("index", [](const Found& found) { return found.index; })
        .def_prop_ro("rule_count", [](const Found& found) { return found.rules.size(); })
        .def("rules", &ruleColumns, nb::arg("watch"), "The rules as columns.")
        .def_prop_ro("set_count", &Found::setCount)
        .def("set_counts", &Found::setCounts, "The number of item sets of each size, from 1 on.")
        .def("item_sets", &itemSetColumns, nb::arg("keep").none(), nb::arg("watch"),
             "The item sets as columns.")
        .def("extensions", &itemSetExtensions, nb::arg("watch"),
             "Whether each set is not closed, and not maximal.")
        .def(
            "with_basket_rules",
            [](const Found& found, std::size_t histories, Splits splits, double confidence,
               double lift, double conviction, Watch& watch) {
                return withBasketRules(found, histories, splits, {confidence, lift, conviction},
                                       watch);
            },
            nb::arg("histories"), nb::arg("splits"), nb::arg("confidence"), nb::arg("lift"),
            nb::arg("conviction"), nb::arg("watch"), "The same sets with rules that ignore times.")
        .def(
            "with_sides",
            [](const Found& found, const IndexPointer& all, const Column<std::uint8_t>& left,
               const Column<std::uint8_t>& right, double confidence, double lift, double conviction,
               Watch& watch) {
                return withSides(found, all, left, right, {confidence, lift, conviction}, watch);
            },
            nb::arg("all"), nb::arg("left"), nb::arg("right"), nb::arg("confidence"),
            nb::arg("lift"), nb::arg("conviction"), nb::arg("watch"),
            "The rules with certain items on a side.")
        .def(
            "with_counted_sides",
            [](const Found& found, const Column<std::uint8_t>& left,
               const Column<std::uint8_t>& right, const Column<std::uint32_t>& antecedents,
               const Column<std::uint32_t>& consequents, std::size_t histories, double confidence,
               double lift, double conviction, Watch& watch) {
                return withCountedSides(found, left, right, antecedents, consequents, histories,
                                        {confidence, lift, conviction}, watch);
            },
            nb::arg("left"), nb::arg("right"), nb::arg("antecedents"), nb::arg("consequents"),
            nb::arg("histories"), nb::arg("confidence"), nb::arg("lift"), nb::arg("conviction"),
            nb::arg("watch"), "The same, with known counts of sides.")
        .def("write", &writeFile, nb::arg("path"), nb::arg("rules"), nb::arg("keep").none(),
             "Writes the rules file or the item-set file of the tool.");
    module.def("mine", &mine, nb::arg("index"), nb::arg("options"), nb::arg("watch"));
    module.def("mine_item_sets", &mineItemSets, nb::arg("index"), nb::arg("options"),
               nb::arg("watch"));
}

void addQuestions(nb::module_& module) {
    module.def("explain", &explain, nb::arg("index"), nb::arg("antecedent"), nb::arg("subsequent"),
               nb::arg("window"), "Whether a rule counts, for each history with all its items.");
    module.def("lags", &lags, nb::arg("found"), nb::arg("places"), nb::arg("window"),
               nb::arg("threads"), nb::arg("watch"), "The lags and reverse counts of rules.");
    module.def("redundant", &redundant, nb::arg("found"), nb::arg("places"), nb::arg("values"),
               nb::arg("watch"), "Whether a more general rule is at least as good.");
    module.def("match", &match, nb::arg("found"), nb::arg("places"), nb::arg("histories"),
               nb::arg("times"), nb::arg("ranks"), nb::arg("now"), nb::arg("window"),
               nb::arg("watch"), "The rules that match histories at a time.");
    module.def("test_order", &testOrder, nb::arg("found"), nb::arg("options"),
               nb::arg("permutations"), nb::arg("seed"), nb::arg("threads"), nb::arg("watch"),
               "How far the counts stand out from those of permuted times.");
    module.def("fisher", &fisher, nb::arg("n"), nb::arg("a"), nb::arg("s"), nb::arg("u"),
               "Tails of hypergeometric distributions.");
}

}  // namespace

NB_MODULE(_engine, module) {
    module.doc() = "The mining engine for Python, as numbers and columns. Internal to quarvis.";
    addErrors(module);
    addWatch(module);
    addInput(module);
    addRuns(module);
    addQuestions(module);
    addShards(module);
}
