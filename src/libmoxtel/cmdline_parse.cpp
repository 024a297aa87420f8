#include <moxtel/cmdline.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <deque>
#include <string>

#include <moxtel/memory.hpp>
#include <moxtel/parse.hpp>

// One walk over the tokens. Each step returns whether the walk goes on with the token at `i`. A
// failure of the parse is remembered apart from that.
namespace moxtel::cmdline {

namespace {

struct Walk {
    const CmdLine& registry;
    int argc;
    const char* const* argv;
    int i = 1;
    bool success = true;
    std::deque<CmdLine::Binding> bindings = {};
    std::deque<std::string> excess = {};
};

template <class T>
mem::Array<T> toArray(const std::deque<T>& queue, const mem::Allocator* allocator = nullptr) {
    mem::Array<T> array(queue.size(), allocator);
    std::copy(queue.begin(), queue.end(), array.begin());
    return array;
}

template <class T>
bool parseOrDie(const char* text, T& out) {
    std::size_t k = 0;
    out = string::parse<T>(text, k);
    if (k != 0 && k == std::strlen(text))
        return true;
    std::fprintf(stderr, "Couldn't parse \"%s\".\n", text);
    return false;
}

bool processValue(const char* text, const Option& option, CmdLine::Value& value) {
    value.raw = text;
    switch (option.domain) {
        case Domain::ALIAS:
            std::fputs("Warning: ALIAS shouldn't have arguments.\n", stderr);
            return false;
        case Domain::STRING:
            value.data.ui = 0;
            return true;
        case Domain::BOOL:
            return parseOrDie(text, value.data.b);
        case Domain::SINT:
            return parseOrDie(text, value.data.si);
        case Domain::UINT:
            return parseOrDie(text, value.data.ui);
        case Domain::FLOAT:
            return parseOrDie(text, value.data.fl);
    }
    std::fprintf(stderr, "Don't know about domain %u.\n", unsigned{option.domain.value});
    return false;
}

/// `attached` is the text after the key in the option's token, perhaps with a leading `=`.
bool processOption(Walk& walk, const Option& option, bool isShort, const char* attached) {
    const auto pos = static_cast<std::size_t>(walk.i - 1);
    const std::string name =
        isShort ? std::string("-") + option.shortKey() : "--" + option.longKey();
    std::deque<CmdLine::Value> values;
    const auto take = [&option, &values](const char* text) {
        return processValue(text, option, values.emplace_back());
    };

    if (*attached == '=')
        ++attached;
    if (*attached != '\0') {
        if (option.maxArity == 0) {
            std::fprintf(stderr, "Option \"%s\" doesn't take parameters.\n", name.c_str());
            walk.success = false;
            return true;
        }
        if (!take(attached))
            return walk.success = false;
    }
    // A token that begins with a dash is never a value, so a negative number must be attached.
    while (walk.i < walk.argc && values.size() < option.maxArity && *walk.argv[walk.i] != '-')
        if (!take(walk.argv[walk.i++]))
            return walk.success = false;
    if (values.size() < option.minArity) {
        std::fprintf(stderr, "Not enough arguments for option \"%s\": have %zu, need %zu.\n",
                     name.c_str(), values.size(), option.minArity);
        walk.success = false;
        return true;
    }
    walk.bindings.push_back({pos, toArray(values, mem::MALLOC), &option});
    return true;
}

bool parseShortOption(Walk& walk, const char* token) {
    const char key = token[1];
    if (!walk.registry.hasShort(key)) {
        std::fprintf(stderr, "Unknown short option: %s\n", token + 1);
        walk.success = false;
        return true;
    }
    return processOption(walk, walk.registry.forShort(key), true, token + 2);
}

bool parseLongOption(Walk& walk, const char* token) {
    const char* attached = token + 2 + std::strcspn(token + 2, "=");
    const std::string name(token + 2, attached);
    if (!walk.registry.hasLong(name)) {
        // Only this message goes to standard output, not that of a short option.
        std::printf("Unknown long option: %s\n", name.c_str());
        walk.success = false;
        return true;
    }
    return processOption(walk, walk.registry.forLong(name), false, attached);
}

bool parseOption(Walk& walk) {
    const char* token = walk.argv[walk.i++];
    return token[1] == '-' ? parseLongOption(walk, token) : parseShortOption(walk, token);
}

bool doParse(Walk& walk) {
    if (walk.i >= walk.argc)
        return false;
    const char* token = walk.argv[walk.i];
    const bool isTwoDashes = std::strcmp(token, "--") == 0;
    if (isTwoDashes)
        std::fputs("Got --\n", stderr);
    else if (token[0] == '-' && token[1] != '\0')
        return parseOption(walk);
    walk.excess.emplace_back(token);
    ++walk.i;
    return true;
}

}  // namespace

CmdLine::Result CmdLine::parse(int argc, const char* const* argv) const {
    Walk walk{*this, argc, argv};
    while (doParse(walk)) {}
    if (!walk.success)
        return Result();
    return {true, toArray(walk.bindings), toArray(walk.excess)};
}

}  // namespace moxtel::cmdline
