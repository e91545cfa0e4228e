#pragma once

#include <cstddef>

#include "solver/flow_state.hpp"
#include "solver/plane_walk.hpp"
#include "solver/turbulence/transport_scratch.hpp"
#include "solver/turbulence/transport_walk.hpp"

namespace torvex {

// Neighbour coefficients of the transport of phi in all interior cells, and row by row the sources:
// source(j, k, cross) is told the balance of cross diffusion in the cells 2..nx of row (j,k). It
// must not write phi. Where `log_faces` are given, they
// pass `flux` with the viscosity of the log law. The plain
// form is tests/solver/reference/plain_turbulence.
template <class Source>
void assemble_transport(const GridGeometry& g, FlowState& s, const Field3& phi, float sigma,
                        TransportScratch& scratch, Source source,
                        const LogFaces* log_faces = nullptr, LogFlux flux = LogFlux::of_speed) {
    struct WithSource : TransportWalk {
        const Source& source;

        WithSource(const TransportWalk& walk, const Source& s) : TransportWalk(walk), source(s) {}
        void next_row(int j, int k, bool with_plane_above) {
            source(j, k, TransportWalk::next_row(j, k, with_plane_above));
        }
    };
    fit(scratch, g);
    walk_planes(g, [&](std::size_t thread) {
        return WithSource(TransportWalk(g, s, phi, sigma, scratch.threads[thread], log_faces, flux),
                          source);
    });
}

}  // namespace torvex
