// SPDX-License-Identifier: MIT
#include "framework/core/Object.h"

#include <gtest/gtest.h>
#include <memory>

namespace {

class Gauge : public CObject
{
    DECLARE_DYNAMIC(Gauge)
};

class Compass : public Gauge
{
    DECLARE_DYNCREATE(Compass)
public:
    int heading = 7;
};

class Unrelated : public CObject
{
    DECLARE_DYNAMIC(Unrelated)
};

IMPLEMENT_DYNAMIC(Gauge, CObject)
IMPLEMENT_DYNCREATE(Compass, Gauge)
IMPLEMENT_DYNAMIC(Unrelated, CObject)

} // namespace

TEST(RuntimeClass, ReportsNameSizeAndSchema)
{
    const CRuntimeClass* compass = Compass().GetRuntimeClass();
    EXPECT_STREQ(compass->m_lpszClassName, "Compass");
    EXPECT_EQ(compass->m_nObjectSize, static_cast<int>(sizeof(Compass)));
    EXPECT_EQ(compass->m_wSchema, 0xFFFFu);
    EXPECT_STREQ(RUNTIME_CLASS(CObject)->m_lpszClassName, "CObject");
}

TEST(RuntimeClass, IsThatOfTheObjectBehindABasePointer)
{
    const std::unique_ptr<CObject> object = std::make_unique<Compass>();
    EXPECT_EQ(object->GetRuntimeClass(), RUNTIME_CLASS(Compass));
    EXPECT_NE(object->GetRuntimeClass(), RUNTIME_CLASS(Gauge));
}

TEST(RuntimeClass, KnowsItsAncestors)
{
    const Compass compass;
    EXPECT_TRUE(compass.IsKindOf(RUNTIME_CLASS(Compass)));
    EXPECT_TRUE(compass.IsKindOf(RUNTIME_CLASS(Gauge)));
    EXPECT_TRUE(compass.IsKindOf(RUNTIME_CLASS(CObject)));
    EXPECT_FALSE(compass.IsKindOf(RUNTIME_CLASS(Unrelated)));
    EXPECT_FALSE(Unrelated().IsKindOf(RUNTIME_CLASS(Gauge)));
    EXPECT_FALSE(Gauge().IsKindOf(RUNTIME_CLASS(Compass)));
    EXPECT_TRUE(RUNTIME_CLASS(Compass)->IsDerivedFrom(RUNTIME_CLASS(Gauge)));
    EXPECT_FALSE(RUNTIME_CLASS(CObject)->IsDerivedFrom(RUNTIME_CLASS(Gauge)));
}

TEST(RuntimeClass, CreatesObjectsOfClassesThatAllowIt)
{
    const std::unique_ptr<CObject> object(RUNTIME_CLASS(Compass)->CreateObject());
    ASSERT_NE(object, nullptr);
    ASSERT_TRUE(object->IsKindOf(RUNTIME_CLASS(Compass)));
    EXPECT_EQ(static_cast<Compass&>(*object).heading, 7);
    EXPECT_EQ(RUNTIME_CLASS(Gauge)->CreateObject(), nullptr);
    EXPECT_EQ(RUNTIME_CLASS(CObject)->CreateObject(), nullptr);
}

TEST(RuntimeClass, OfAClassThatDeclaresNoneIsThatOfItsBase)
{
    class Plain : public CObject
    {};
    EXPECT_EQ(Plain().GetRuntimeClass(), RUNTIME_CLASS(CObject));
    EXPECT_FALSE(Plain().IsKindOf(RUNTIME_CLASS(Compass)));
}
