#include "audio/dsp/spline.hpp"

#include <algorithm>
#include <stdexcept>

namespace qoraudiotoolkit {

Spline::Spline(std::vector<double> x, std::vector<double> y) : x_(std::move(x)), y_(std::move(y)) {
    if (x_.size() != y_.size())
        throw std::invalid_argument("Spline: as many x as y values are needed");
    for (std::size_t i = 1; i < x_.size(); ++i)
        if (!(x_[i] > x_[i - 1]))
            throw std::invalid_argument("Spline: x must rise strictly");
    const std::size_t n = x_.size();
    curvature_.assign(n, 0.0);
    if (n < 3)
        return;
    // The tridiagonal system of the inner second derivatives, solved by elimination forward
    // and substitution back.
    std::vector<double> diagonal(n, 0.0), right(n, 0.0);
    for (std::size_t i = 1; i + 1 < n; ++i) {
        const double h0 = x_[i] - x_[i - 1];
        const double h1 = x_[i + 1] - x_[i];
        diagonal[i] = 2.0 * (h0 + h1);
        right[i] = 6.0 * ((y_[i + 1] - y_[i]) / h1 - (y_[i] - y_[i - 1]) / h0);
        if (i > 1) {
            const double factor = h0 / diagonal[i - 1];
            diagonal[i] -= factor * h0;
            right[i] -= factor * right[i - 1];
        }
    }
    for (std::size_t i = n - 2; i >= 1; --i) {
        const double h1 = x_[i + 1] - x_[i];
        curvature_[i] = (right[i] - h1 * curvature_[i + 1]) / diagonal[i];
    }
}

double Spline::Evaluate(double x) const {
    if (x_.empty())
        return 0.0;
    if (!(x > x_.front()))
        return y_.front();
    if (!(x < x_.back()))
        return y_.back();
    const std::size_t i = std::size_t(std::upper_bound(x_.begin(), x_.end(), x) - x_.begin()) - 1;
    const double h = x_[i + 1] - x_[i];
    const double a = (x_[i + 1] - x) / h;
    const double b = (x - x_[i]) / h;
    return a * y_[i] + b * y_[i + 1] +
           ((a * a * a - a) * curvature_[i] + (b * b * b - b) * curvature_[i + 1]) * h * h / 6.0;
}

} // namespace qoraudiotoolkit
