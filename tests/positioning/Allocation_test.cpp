// Counts what the program asks of the free store.
#include "tests/positioning/Reach.h"

#include <cstdlib>
#include <new>

namespace {

long allocations = 0;

void* Allocate(std::size_t size)
{
    ++allocations;
    if (void* memory = std::malloc(size > 0 ? size : 1)) return memory;
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t size)
{
    return Allocate(size);
}
void* operator new[](std::size_t size)
{
    return Allocate(size);
}
void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace {

TEST(Allocation, IsCounted)
{
    const long before = allocations;
    delete new int(7);
    const CString text = L"a text too long for the object itself";
    EXPECT_GT(allocations, before);
    EXPECT_GT(text.GetLength(), 0);
}

TEST(Allocation, IsNotNeededToMeasure)
{
    for (const int type : kSensorTypes) {
        Reach sensor(type);
        PoseSensorData leaning = Sample(5, 12, {150, 80, -400});
        PoseSensorData plumb = Sample(0, 0, {150, 80, -400});
        xyhCoordinate point;
        const long before = allocations;
        sensor.Position(leaning, 2.0, point);
        sensor.Position(plumb, 2.0, point);
        sensor.Position_Geometry_A(point, leaning, 2.0, point);
        sensor.Position_Geometry_B(point, leaning, 2.0, point);
        EXPECT_EQ(allocations, before) << "type " << type;
    }
}

} // namespace
