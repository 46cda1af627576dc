#include "radio/fit/Bowl.h"

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Radio::Fit {

namespace {

using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::VectorXd;

/** The probes of one place in coordinates of their own, so that no square is large. */
struct Local {
    Pair centre{};
    double unit = 1.0;
    /** A row of the form's terms ii, 2 iq, qq, and one of i, q, 1. */
    MatrixXd form;
    MatrixXd rest;
    VectorXd power;
};

Local localOf(const std::vector<PowerProbe>& probes) {
    Local local;
    const auto count = static_cast<double>(probes.size());
    for (const PowerProbe& probe : probes) {
        local.centre.i += probe.at.i / count;
        local.centre.q += probe.at.q / count;
    }
    for (const PowerProbe& probe : probes) {
        local.unit = std::max(
            {local.unit, std::abs(probe.at.i - local.centre.i), std::abs(probe.at.q - local.centre.q)});
    }
    const auto rows = static_cast<Index>(probes.size());
    local.form.resize(rows, 3);
    local.rest.resize(rows, 3);
    local.power.resize(rows);
    for (Index row = 0; row < rows; ++row) {
        const PowerProbe& probe = probes[static_cast<std::size_t>(row)];
        const double i = (probe.at.i - local.centre.i) / local.unit;
        const double q = (probe.at.q - local.centre.q) / local.unit;
        local.form.row(row) << i * i, 2.0 * i * q, q * q;
        local.rest.row(row) << i, q, 1.0;
        local.power(row) = probe.power;
    }
    return local;
}

/** A detector's error is a fraction of what it measures. */
VectorXd weightsOf(const VectorXd& power) {
    const double least = std::max(power.maxCoeff() * 1e-12, 1e-30);
    return power.cwiseMax(least).cwiseInverse();
}

/** Least squares on relative errors: weighted by what was measured, then by what was fitted. */
VectorXd solve(const MatrixXd& terms, const VectorXd& power, VectorXd& weights) {
    VectorXd solution;
    for (int round = 0; round < 4; ++round) {
        solution = (weights.asDiagonal() * terms).colPivHouseholderQr().solve(weights.cwiseProduct(power));
        const VectorXd fitted = terms * solution;
        // A fit may go below 0 where next to nothing leaks; what was measured is the better weight there.
        weights = weightsOf(fitted.cwiseMax(0.3 * power).cwiseMin(3.0 * power));
    }
    return solution;
}

/** What is left to tell from the linear terms of power = form + rest. */
Bowl bowlOf(const Local& local, const Eigen::Matrix2d& form, const Eigen::Vector3d& rest) {
    const Eigen::Vector2d bottom = -0.5 * form.inverse() * rest.head<2>();
    Bowl bowl;
    const double square = local.unit * local.unit;
    bowl.curvature = {form(0, 0) / square, form(0, 1) / square, form(1, 1) / square};
    bowl.bottom = {local.centre.i + bottom(0) * local.unit, local.centre.q + bottom(1) * local.unit};
    bowl.floor = rest(2) - bottom.dot(form * bottom);
    return bowl;
}

/** How far off the bottom is for what the linear terms are off. */
double spreadOf(const Local& local, const Eigen::Matrix2d& form, const MatrixXd& covariance) {
    const Eigen::Matrix2d bend = 0.5 * local.unit * form.inverse();
    return std::sqrt(std::max(0.0, (bend * covariance * bend.transpose()).trace() / 2.0));
}

void judge(Bowl& bowl, const MatrixXd& terms, const VectorXd& solution, const VectorXd& power,
           const VectorXd& weights) {
    const VectorXd miss = weights.cwiseProduct(terms * solution - power);
    bowl.freedom = static_cast<int>(terms.rows() - terms.cols());
    bowl.misfit = std::sqrt(miss.squaredNorm() / std::max(1, bowl.freedom));
}

Eigen::Matrix2d matrixOf(const Curvature& curvature, double unit) {
    Eigen::Matrix2d form;
    form << curvature.ii, curvature.iq, curvature.iq, curvature.qq;
    return form * (unit * unit);
}

} // namespace

double Curvature::amplitude() const {
    return std::sqrt(std::max(0.0, (ii + qq) / 2.0));
}

bool Curvature::isBowl() const {
    const double half = (ii + qq) / 2.0;
    const double apart = std::hypot((ii - qq) / 2.0, iq);
    // Powers: a hundred for an amplitude ten times as steep.
    return std::isfinite(half) && half > 0.0 && half - apart > (half + apart) / 100.0;
}

std::optional<Bowl> fitBowl(const std::vector<PowerProbe>& probes) {
    if (probes.size() < 6) {
        return std::nullopt;
    }
    const Local local = localOf(probes);
    MatrixXd terms(local.form.rows(), 6);
    terms << local.form, local.rest;
    VectorXd weights = weightsOf(local.power);
    const VectorXd solution = solve(terms, local.power, weights);
    const Curvature scaled{solution(0), solution(1), solution(2)};
    if (!scaled.isBowl()) {
        return std::nullopt;
    }
    const Eigen::Matrix2d form = matrixOf(scaled, 1.0);
    Bowl bowl = bowlOf(local, form, solution.tail<3>());
    judge(bowl, terms, solution, local.power, weights);
    const MatrixXd weighted = weights.asDiagonal() * local.rest;
    const MatrixXd covariance = (weighted.transpose() * weighted).inverse();
    bowl.spread = spreadOf(local, form, covariance.topLeftCorner<2, 2>());
    return bowl;
}

std::optional<Bowl> fitBottom(const std::vector<PowerProbe>& probes, const Curvature& curvature) {
    if (probes.size() < 3 || !curvature.isBowl()) {
        return std::nullopt;
    }
    const Local local = localOf(probes);
    const Eigen::Matrix2d form = matrixOf(curvature, local.unit);
    const VectorXd known = local.form * Eigen::Vector3d(form(0, 0), form(0, 1), form(1, 1));
    VectorXd weights = weightsOf(local.power);
    Eigen::Vector3d solution;
    for (int round = 0; round < 4; ++round) {
        const MatrixXd terms = weights.asDiagonal() * local.rest;
        const auto decomposed = terms.colPivHouseholderQr();
        if (decomposed.rank() < 3) {
            return std::nullopt;
        }
        solution = decomposed.solve(weights.cwiseProduct(local.power - known));
        const VectorXd fitted = known + local.rest * solution;
        weights = weightsOf(fitted.cwiseMax(0.3 * local.power).cwiseMin(3.0 * local.power));
    }
    Bowl bowl = bowlOf(local, form, solution);
    bowl.curvature = curvature;
    judge(bowl, local.rest, solution, local.power - known, weights);
    const MatrixXd weighted = weights.asDiagonal() * local.rest;
    const MatrixXd covariance = (weighted.transpose() * weighted).inverse();
    bowl.spread = spreadOf(local, form, covariance.topLeftCorner<2, 2>());
    return bowl;
}

std::optional<Curvature> fitCurvature(const std::vector<std::vector<PowerProbe>>& places) {
    Eigen::Matrix3d normal = Eigen::Matrix3d::Zero();
    Eigen::Vector3d right = Eigen::Vector3d::Zero();
    for (const std::vector<PowerProbe>& probes : places) {
        if (probes.size() < 4) {
            continue;
        }
        const Local local = localOf(probes);
        const VectorXd weights = weightsOf(local.power);
        // What bottom and floor of the place can make up for says nothing of the curvature.
        const auto place = (weights.asDiagonal() * local.rest).eval().householderQr();
        MatrixXd form = weights.asDiagonal() * local.form * (local.unit * local.unit);
        VectorXd power = weights.cwiseProduct(local.power);
        form = (place.householderQ().transpose() * form).eval().bottomRows(form.rows() - 3);
        power = (place.householderQ().transpose() * power).eval().tail(power.rows() - 3);
        normal += form.transpose() * form;
        right += form.transpose() * power;
    }
    const Eigen::Vector3d scale = normal.diagonal().cwiseMax(1e-300).cwiseSqrt().cwiseInverse();
    const Eigen::Matrix3d scaled = scale.asDiagonal() * normal * scale.asDiagonal();
    const Eigen::Vector3d solution =
        scale.cwiseProduct(scaled.ldlt().solve(scale.cwiseProduct(right)).eval());
    const Curvature curvature{solution(0), solution(1), solution(2)};
    return curvature.isBowl() ? std::optional(curvature) : std::nullopt;
}

} // namespace Radio::Fit
