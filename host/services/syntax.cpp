#include "services/syntax.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace services {
namespace {

std::vector<std::string> words_of(const std::string& line) {
    std::istringstream stream(line);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) words.push_back(std::move(word));
    return words;
}

}  // namespace

// An object's line has five words: its name, place, type, access and status. Named numbers follow with their type or
// object: "%es TruthValue true 1", "%ev swPortDuplex full 1".
Syntaxes read_syntaxes(const std::string& path) {
    std::ifstream file(path);
    if (!file) throw std::runtime_error(fmt::format("cannot read {}: {}", path, std::strerror(errno)));
    Syntaxes objects;
    std::map<std::string, std::map<std::int32_t, std::string>> types;
    std::size_t number = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        const std::vector<std::string> words = words_of(line);
        try {
            if (words.empty()) continue;
            if (words[0] == "%es")
                types[words.at(1)][std::stoi(words.at(3))] = words.at(2);
            else if (words[0] == "%ev")
                objects[words.at(1)].names[std::stoi(words.at(3))] = words.at(2);
            else if (words[0][0] != '%' && words.size() == 5)
                objects[words[0]].type = words[2];
            else if (words[0][0] != '%' && words.size() != 2)  // two: a node that is not an object
                throw std::invalid_argument(line);
        } catch (const std::logic_error&) {
            throw std::runtime_error(fmt::format("{}, line {}: not what smidump -f mosy prints", path, number));
        }
    }
    for (auto& [name, object] : objects)
        if (const auto type = types.find(object.type); type != types.end()) object.names = type->second;
    return objects;
}

}  // namespace services
