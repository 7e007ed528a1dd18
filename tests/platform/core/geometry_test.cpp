#include "platform/core/color_rgba.hpp"
#include "platform/core/point.hpp"
#include "platform/core/rect.hpp"
#include "platform/core/scale_matrix.hpp"

#include <gtest/gtest.h>

#include <cmath>

using namespace qorcore;

TEST(RectT, EdgesContainmentAndHalfOpenness) {
    const RectT<float> r(10, 20, 30, 40);
    EXPECT_EQ(r.Right(), 40);
    EXPECT_EQ(r.Bottom(), 60);
    EXPECT_TRUE(r.Contains(PointT<float>(10, 20)));
    EXPECT_FALSE(r.Contains(PointT<float>(40, 30))) << "right edge is outside";
    EXPECT_FALSE(r.Contains(PointT<float>(20, 60))) << "bottom edge is outside";
    EXPECT_TRUE(r.Contains(RectT<float>(10, 20, 30, 40)));
    EXPECT_FALSE(r.Contains(RectT<float>(9, 20, 5, 5)));
    EXPECT_FALSE(RectT<float>(0, 0, 0, 5).Contains(PointT<float>(0, 0)));
    EXPECT_TRUE(RectT<float>(0, 0, -1, 5).IsEmpty());
    EXPECT_TRUE(RectT<float>(0, 0, NAN, 5).IsEmpty());
}

TEST(RectT, IntersectionAndUnion) {
    const RectT<int> a(0, 0, 10, 10);
    const RectT<int> b(5, 5, 10, 10);
    EXPECT_EQ(a.Intersection(b), RectT<int>(5, 5, 5, 5));
    EXPECT_TRUE(a.Intersects(b));
    EXPECT_FALSE(a.Intersects(RectT<int>(10, 0, 5, 5))) << "touching is no overlap";
    EXPECT_TRUE(a.Intersection(RectT<int>(20, 20, 5, 5)).IsEmpty());
    EXPECT_EQ(a.Union(b), RectT<int>(0, 0, 15, 15));
    EXPECT_EQ(a.Union(RectT<int>(100, 100, 0, 0)), a) << "an empty rectangle adds nothing";
    EXPECT_EQ(RectT<int>().Union(b), b);
    EXPECT_EQ(a.Inset(2, 3), RectT<int>(2, 3, 6, 4));
    EXPECT_EQ(a.Offset(PointT<int>(1, -1)), RectT<int>(1, -1, 10, 10));
}

TEST(RectT, OutsetToIntegersCoversFractionalEdges) {
    EXPECT_EQ(OutsetToIntegers(RectT<float>(0.5f, 1.2f, 2.0f, 3.9f)), RectT<int>(0, 1, 3, 5));
    EXPECT_EQ(OutsetToIntegers(RectT<float>(-0.5f, -1.0f, 1.0f, 1.0f)), RectT<int>(-1, -1, 2, 1));
    EXPECT_EQ(RoundPoint(PointT<float>(1.5f, -1.5f)), PointT<int>(2, -2));
}

TEST(ScaleMatrixT, ComposesAndInverts) {
    const ScaleMatrixT<float> toParent{1, 1, 10, 20};
    const ScaleMatrixT<float> toDevice{2, 2, 0, 0};
    const ScaleMatrixT<float> both = toDevice.Compose(toParent);
    EXPECT_EQ(both.Apply(PointT<float>(1, 1)), PointT<float>(22, 42));
    EXPECT_EQ(both.Inverse().Apply(PointT<float>(22, 42)), PointT<float>(1, 1));
    EXPECT_EQ(both.Apply(RectT<float>(0, 0, 5, 5)), RectT<float>(20, 40, 10, 10));
}

TEST(ColorRGBA, BytesClampingAndNamedColours) {
    EXPECT_EQ(ColorRGBA::FromBytes(255, 0, 51), ColorRGBA(1.0f, 0.0f, 0.2f, 1.0f));
    EXPECT_EQ(ColorRGBA(2.0f, -1.0f, NAN, 0.5f).Clamped(), ColorRGBA(1.0f, 0.0f, 0.0f, 0.5f));
    EXPECT_EQ(ColorRGBAFixed::Black.WithAlpha(0.25f), ColorRGBA(0, 0, 0, 0.25f));
    EXPECT_EQ(ColorRGBA(), ColorRGBAFixed::Black);
}
