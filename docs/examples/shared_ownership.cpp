// Shares a managed object, an object that the caller owns, and a buffer.
#include <iostream>
#include <string>

#include <moxtel/pointer.hpp>

using moxtel::mem::Array;
using moxtel::mem::Pointer;

namespace {

struct Sensor {
    explicit Sensor(const std::string& sensorName) : name(sensorName) {}
    Sensor(const Sensor&) = delete;
    Sensor& operator=(const Sensor&) = delete;
    ~Sensor() { std::cout << name << " is gone\n"; }

    std::string name;
};

}  // namespace

int main() {
    // An object made by `new` lives until its last handle is gone.
    Pointer<Sensor> first(new Sensor("indoors"));
    {
        Pointer<Sensor> second(first);
        first = Pointer<Sensor>();
        std::cout << second->name << " is still there\n";
    }

    // A protected object stays with its owner, even while there are handles to it.
    Sensor local("outdoors");
    moxtel::mem::protect(&local);
    first = Pointer<Sensor>(&local);
    first = Pointer<Sensor>();
    std::cout << local.name << " is still there\n";
    moxtel::mem::free(&local);

    // Copies of an array share its elements. A clone has its own elements.
    Array<int> readings(3);
    Array<int> shared(readings);
    Array<int> cloned = readings.clone();
    readings.fill(20);
    std::cout << "shared " << shared[0] << ", cloned " << cloned[0] << '\n';
}
