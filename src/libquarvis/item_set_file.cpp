#include <ostream>

#include <moxtel/file_stream.hpp>

#include <quarvis/item_set_histogram.hpp>

namespace quarvis::rule {

void ItemSetHistogram::readInto(std::istream&, char) {}

void ItemSetHistogram::readInto(const std::string&, char) {}

void ItemSetHistogram::write(std::ostream& os) const {
    os << "Count\tItem Set" << std::endl;
    for (const auto& [items, count] : m_data)
        os << count << '\t' << items << std::endl;
}

void ItemSetHistogram::write(const std::string& path) const {
    moxtel::io::OutputFile out(path);
    write(out);
    out.close();
}

}  // namespace quarvis::rule
