// The fit against regression problems with certified answers (tests/probe/data): correct significant digits
// of every coefficient.
#include <gtest/gtest.h>

#include "nist_reference.h"
#include "platform/text.h"
#include "support/temp_dir.h"

namespace {

// The fewest digits each problem keeps on every target (x87 and SSE arithmetic round differently). Filip's
// design matrix holds rounded powers of x (condition about 5e9 after column scaling): that rounding alone
// costs about eight of the certificate's fifteen digits.
TEST(ReferenceProblems, KeepTheCertifiedDigits) {
    const double kDigits[] = {12, 12, 12, 12, 12, 12, 7};
    for (int i = 0; i < 7; ++i) {
        const char* name = uc::test::kReferenceProblems[i];
        const uc::test::ReferenceProblem p = uc::test::ReadReferenceProblem(
            uc::ToUtf8(uc::test::SourceDir()) + "/tests/probe/data/" + name + ".dat");
        ASSERT_GT(p.samples.size(), p.certified.size()) << name;
        EXPECT_GE(uc::test::FitDigits(p), kDigits[i]) << name;
    }
}

}  // namespace
