#include "fuzz/seeds/seeds.h"

namespace
{
const fuzz::SeedSource s_scripts("script",
                                 [](fuzz::SeedFolder& seeds)
                                 {
                                     seeds.add("object", R"(// An object.
soldier
{
    geometry { exportdata "men\\soldier \"A\".tw"  crossmode normalized  boundingBoxMin (-1, -2.5e1, .5) }
    animation { index -3  filename idle.tw } /* two
    lines */
    animation { index 1 filename "" }
}
)");
                                     seeds.add("keys", "a { s word i 12 f 1e-3 v (1,2,3) }\nb { s \"x y\" i -1 f 2 }");
                                     seeds.add("damaged", "a { b { \"x");
                                 });
}  // namespace
