/// Looks into a codec's tables.
#pragma once

#include "p25/CtbReedSolomon.h"

#include <cstdint>
#include <vector>

namespace orva::p25 {

struct CtbReedSolomonInspector {
    const CtbReedSolomon& codec;

    std::uint32_t FieldPolynomial() const { return codec.fieldPolynomial; }
    std::uint32_t FieldSize() const { return codec.fieldSize; }
    std::uint32_t ParityCount() const { return codec.parityCount; }
    std::uint32_t DataCount() const { return codec.dataCount; }
    bool HasGenerator() const { return codec.generator != nullptr; }

    std::vector<std::uint32_t> ExpTable() const { return Copy(codec.expTable.get(), codec.fieldSize); }
    std::vector<std::uint32_t> LogTable() const { return Copy(codec.logTable.get(), codec.fieldSize); }
    std::vector<std::uint32_t> Generator() const {
        return Copy(codec.generator.get(), codec.parityCount + 1);
    }
    std::vector<std::uint32_t> Roots() const { return Copy(codec.roots.get(), codec.parityCount); }
    std::uint32_t LocatorDegree() const { return codec.locatorDegrees[codec.parityCount]; }

    std::uint32_t Product(std::uint32_t a, std::uint32_t b) const { return codec.Multiply(a, b); }
    std::uint32_t Quotient(std::uint32_t a, std::uint32_t b) const { return codec.Divide(a, b); }

    /// Product of two polynomials and the degree that the routine tells; `product` stays as it is when the
    /// degree exceeds `maxDegree`.
    std::uint32_t MultiplyPolynomials(const std::vector<std::uint32_t>& a,
                                      const std::vector<std::uint32_t>& b, std::uint32_t maxDegree,
                                      std::vector<std::uint32_t>& product) const {
        return codec.MultiplyPolynomials(a.data(), static_cast<std::uint32_t>(a.size() - 1), b.data(),
                                         static_cast<std::uint32_t>(b.size() - 1), maxDegree, product.data());
    }

private:
    static std::vector<std::uint32_t> Copy(const std::uint32_t* first, std::uint32_t count) {
        return {first, first + count};
    }
};

} // namespace orva::p25
