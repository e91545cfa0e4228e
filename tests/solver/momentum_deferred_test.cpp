// The deferred part of convection against values worked out on paper, for the plain form and for
// the solver's. Without viscosity and pressure nothing else is left in su.

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "solver/momentum_assembly.hpp"
#include "solver/momentum_case.hpp"
#include "solver/reference/plain_momentum.hpp"

namespace torvex {
namespace {

using test::MomentumCase;

enum class Line { i, j, k };
constexpr std::array lines{Line::i, Line::j, Line::k};

struct Place {
    int i, j, k;
};

Place place(Line line, int n) {
    return line == Line::i ? Place{n, 3, 3} : (line == Line::j ? Place{3, n, 3} : Place{3, 3, n});
}

// Values along one line of a box with `cells` cells along it, alike in the other two directions;
// the same volume flux through all faces of the line.
class Lines : public MomentumCase {
 public:
    Lines(Line line, const std::vector<float>& phi, float flux)
        : MomentumCase(uniform_mesh(planes(line, static_cast<int>(phi.size()) - 1), 1, 1, 1)),
          line_(line) {
        settings.ETA = 0.5F;
        settings.RATIO = 1.0F;
        for (int k = 1; k <= g.nk; ++k) {
            for (int j = 1; j <= g.nj; ++j) {
                for (int i = 1; i <= g.ni; ++i) {
                    const int n = line == Line::i ? i : (line == Line::j ? j : k);
                    const float value = phi.at(static_cast<std::size_t>(n - 1));
                    s.u(i, j, k) = s.v(i, j, k) = s.w(i, j, k) = value;
                }
            }
        }
        (line == Line::i ? s.flxU : (line == Line::j ? s.flxV : s.flxW)).fill(flux);
    }

    void expect_sources(int component, const std::vector<double>& expected) {
        const plain::Momentum p = plain::start(settings, g, s);
        switch (component) {
            case 0:
                assemble_momentum<Component::u>(context(), work.momentum);
                break;
            case 1:
                assemble_momentum<Component::v>(context(), work.momentum);
                break;
            default:
                assemble_momentum<Component::w>(context(), work.momentum);
                break;
        }
        for (std::size_t m = 0; m < expected.size(); ++m) {
            const auto [i, j, k] = place(line_, static_cast<int>(m) + 2);
            SCOPED_TRACE(testing::Message() << "component " << component << ", line "
                                            << static_cast<int>(line_) << ", cell " << m + 2);
            EXPECT_NEAR(plain::deferred_convection(p, component, i, j, k), expected.at(m), 1e-5);
            EXPECT_NEAR(s.eq.su(i, j, k), expected.at(m), 1e-5);
        }
    }

    void expect_sources_of_all(const std::vector<double>& expected) {
        for (int component = 0; component < 3; ++component) {
            expect_sources(component, expected);
        }
    }

 private:
    static Planes planes(Line line, int n) {
        return {line == Line::i ? n : 4, line == Line::j ? n : 4, line == Line::k ? n : 4};
    }
    Line line_;
};

const std::vector<float> rising{1, 2, 4, 7, 11, 16};

// ETA = 0.5, F = 2: east term dW + 3 dE, west term dWW + 3 dW.
//   cell 2: dW = 2*1, dE = 2             Z = 8 - 0
//   cell 3: dWW = 1, dW = 2, dE = 3      Z = 11 - 7
//   cell 4: dWW = 2, dW = 3, dE = 4      Z = 15 - 11
//   cell 5: dWW = 3, dW = 4              Z = 0 - 15
TEST(DeferredConvection, WithTheWind) {
    for (const Line line : lines) {
        Lines(line, rising, 2.0F).expect_sources_of_all({-2.0, -1.0, -1.0, 3.75});
    }
}

// F = -2: east term 3 dE + dEE, west term 3 dW + dE.
//   cell 2: dE = 2, dEE = 3              Z = 9 - 0
//   cell 3: dW = 2, dE = 3, dEE = 4      Z = 13 - 9
//   cell 4: dW = 3, dE = 4, dEE = 5      Z = 17 - 13
//   cell 5: dW = 4, dE = 2*5             Z = 0 - 22
TEST(DeferredConvection, AgainstTheIndex) {
    for (const Line line : lines) {
        Lines(line, rising, -2.0F).expect_sources_of_all({-2.25, -1.0, -1.0, 5.5});
    }
}

// With ETA = 1 the difference on the upwind side drops out: east term 2 dE F, west term 2 dW F.
TEST(DeferredConvection, EtaOneTakesTheDownstreamDifferenceAlone) {
    for (const Line line : lines) {
        Lines c(line, rising, 2.0F);
        c.settings.ETA = 1.0F;
        c.expect_sources_of_all({-2.0, -1.0, -1.0, 4.0});
    }
}

TEST(DeferredConvection, RatioWeightsIt) {
    for (const Line line : lines) {
        Lines half(line, rising, 2.0F);
        half.settings.RATIO = 0.5F;
        half.expect_sources_of_all({-1.0, -0.5, -0.5, 1.875});
        Lines none(line, rising, 2.0F);
        none.settings.RATIO = 0.0F;
        none.expect_sources_of_all({0.0, 0.0, 0.0, 0.0});
    }
}

// The flux of u is that of mass, that of v and w the volume's.
TEST(DeferredConvection, OnlyUCarriesTheDensity) {
    for (const Line line : lines) {
        Lines c(line, rising, 2.0F);
        c.set_density(1.25F);
        c.expect_sources(0, {-2.5, -1.25, -1.25, 4.6875});
        c.expect_sources(1, {-2.0, -1.0, -1.0, 3.75});
        c.expect_sources(2, {-2.0, -1.0, -1.0, 3.75});
    }
}

// Two cells: the one inner face sees the doubled difference from the cell on its upwind side and
// the single one from the other. F = 2:
//   cell 2: dW = 2*1, dE = 2             Z = 8 - 0
//   cell 3: dWW = 1, dW = 2              Z = 0 - 7
TEST(DeferredConvection, TwoCells) {
    for (const Line line : lines) {
        Lines(line, {1, 2, 4, 7}, 2.0F).expect_sources_of_all({-2.0, 1.75});
        // F = -2. cell 2: dE = 2, dEE = 3, Z = 9; cell 3: dW = 2, dE = 2*3, Z = -12.
        Lines(line, {1, 2, 4, 7}, -2.0F).expect_sources_of_all({-2.25, 3.0});
    }
}

TEST(DeferredConvection, OneCellHasNone) {
    Lines(Line::i, {1, 2, 4}, 2.0F).expect_sources_of_all({0.0});
    Lines(Line::j, {1, 2, 4}, 2.0F).expect_sources_of_all({0.0});
    Lines(Line::k, {1, 2, 4}, -2.0F).expect_sources_of_all({0.0});
}

}  // namespace
}  // namespace torvex
