// A job of bare carbons at given points, bonds perceived and the .GEO log
// open, for the Build-mode tests that measure and turn.
#pragma once

#include <string>
#include <vector>

#include "building/connectivity.h"
#include "building/vec3.h"
#include "session/store_ops.h"
#include "structure_files/geo_log.h"
#include "support/test_support.h"

namespace zentol::testing {

inline void carbon_job(TestSession& t, const std::vector<Vec3>& points, const std::string& job) {
    Store& st = t.s.store;
    element_lookup(st, nullptr, "", kLookupConfirmAll);
    st.natoms = static_cast<int>(points.size());
    for (int i = 1; i <= st.natoms; ++i) {
        const Vec3& p = points[static_cast<std::size_t>(i - 1)];
        st.atom_label[i] = make_label("C" + std::to_string(i));
        st.atom_rec[i] = {p.x, p.y, p.z, 0.76f, 0, 0};
        st.conn_type(i) = 1;
    }
    perceive_bonds(st, nullptr, 0.25f);
    t.s.job.name = job;
    open_job_log(t.s, false, " Zentol " + job);
    save_and_reload(t.s);
}

}  // namespace zentol::testing
