#pragma once

#include <cstddef>
#include <vector>

namespace qoraudiotoolkit {

/// A natural cubic spline through points with strictly rising x: second derivative 0 at both
/// ends, continuous slope and curvature between. Outside the first and last x it holds the end
/// values. With one point it is constant, with two a straight line.
class Spline {
public:
    Spline() = default;
    /// x must rise strictly and both vectors have the same length, else std::invalid_argument.
    Spline(std::vector<double> x, std::vector<double> y);

    bool IsEmpty() const { return x_.empty(); }
    std::size_t GetPointCount() const { return x_.size(); }
    /// 0 for an empty spline.
    double Evaluate(double x) const;

private:
    std::vector<double> x_;
    std::vector<double> y_;
    std::vector<double> curvature_; // second derivatives at the points
};

} // namespace qoraudiotoolkit
