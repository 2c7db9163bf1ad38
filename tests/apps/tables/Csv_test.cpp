// SPDX-License-Identifier: MIT
#include "apps/tables/Csv.h"

#include "tests/apps/ScratchFile.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace {

using apps::test::ScratchFolder;
using tables::CsvReader;
using tables::InputError;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

using Rows = std::vector<std::vector<std::string>>;

Rows AllRows(CsvReader& reader)
{
    Rows rows;
    while (reader.Next()) {
        auto& row = rows.emplace_back();
        for (std::size_t i = 0; i < reader.Columns().size(); ++i)
            row.emplace_back(reader.Field(i));
    }
    return rows;
}

Rows RowsOf(const std::string& content)
{
    const ScratchFolder folder;
    CsvReader reader(folder.Write("rows.csv", content));
    return AllRows(reader);
}

// The reader's error about the content, from the file name on.
std::string ComplaintAbout(const std::string& content)
{
    const ScratchFolder folder;
    const std::string path = folder.Write("rows.csv", content);
    try {
        CsvReader reader(path);
        AllRows(reader);
    } catch (const InputError& error) {
        return std::string(error.what()).substr(path.size() - std::string("rows.csv").size());
    }
    return {};
}

TEST(Csv, ReadsTheSameRowsWhateverTheDialect)
{
    const Rows expected = {
        {"1",  "two"},
        {"-3", ""   }
    };
    const std::pair<const char*, const char*> cases[] = {
        {"a,b\n1,two\n-3,\n",                   "comma and LF"          },
        {"a;b\n1;two\n-3;\n",                   "semicolon"             },
        {"a,b\r\n1,two\r\n-3,\r\n",             "CR LF"                 },
        {"\xEF\xBB\xBF"
         "a,b\n1,two\n-3,\n",          "byte-order mark"       },
        {"a,b\n1,two\n-3,",                     "no line end at the end"},
        {"\n\na,b\n\n1,two\n  \n-3,\n\n",       "blank lines"           },
        {"a,b\n 1 ,\ttwo\n-3, \n",              "padding"               },
        {"\"a\",\"b\"\n\"1\",\"two\"\n-3,\"\"", "quotes"                },
        {"a,b,\n1,two\n-3,\n",                  "header ends in a comma"},
        {"a,b\n1,two,\n-3,,\n",                 "rows end in a comma"   },
    };
    for (const auto& [content, why] : cases)
        EXPECT_EQ(RowsOf(content), expected) << why;
}

TEST(Csv, QuotedFieldsMayContainSeparatorsAndQuotes)
{
    EXPECT_EQ(RowsOf("a,b\n\"x, \"\"y\"\"\", \" z \"\n"), (Rows{
                                                              {"x, \"y\"", " z "}
    }));
}

TEST(Csv, ASeparatorInsideAQuotedNameIsIgnored)
{
    EXPECT_EQ(RowsOf("\"a;b\",c\n1,2\n"), (Rows{
                                              {"1", "2"}
    }));
}

TEST(Csv, TheFirstSeparatorInTheHeaderDecides)
{
    EXPECT_EQ(RowsOf("a,b;c\n1,2;3\n"), (Rows{
                                            {"1", "2;3"}
    }));
    EXPECT_EQ(RowsOf("a;b,c\n1;2,3\n"), (Rows{
                                            {"1", "2,3"}
    }));
}

TEST(Csv, ReportsTheProblemAndTheLine)
{
    const std::pair<const char*, const char*> cases[] = {
        {"",                "rows.csv:1: the file is empty; its first line must name the columns"},
        {"\n\n",            "rows.csv:1: the file is empty; its first line must name the columns"},
        {"a,b\n1,2\n\n3\n", "rows.csv:4: 1 fields where the header names 2 columns"              },
        {"a,b\n1,2,3\n",    "rows.csv:2: 3 fields where the header names 2 columns"              },
        {"a,b\n1,\"2\n",    "rows.csv:2: a quoted field is not closed on its line"               },
        {"a,b\n\"1\"x,2\n", "rows.csv:2: text follows a quoted field"                            },
    };
    for (const auto& [content, expected] : cases)
        EXPECT_EQ(ComplaintAbout(content), expected);
}

TEST(Csv, NamesTheLineOfAHeaderBelowBlankLines)
{
    const ScratchFolder folder;
    const CsvReader reader(folder.Write("rows.csv", "\n \na,b,b\n1,2,3\n"));
    for (const char* const name : {"b", "c"}) {
        try {
            reader.Require(name);
            ADD_FAILURE() << name;
        } catch (const InputError& error) {
            EXPECT_THAT(error.what(), HasSubstr("rows.csv:3: ")) << name;
        }
    }
}

TEST(Csv, AMissingFileIsNamed)
{
    const ScratchFolder folder;
    try {
        const CsvReader reader(folder.Path("none.csv"));
        FAIL() << "opened";
    } catch (const InputError& error) {
        EXPECT_THAT(error.what(), EndsWith("none.csv: No such file or directory"));
    }
}

TEST(Csv, AFolderIsNotAFile)
{
    const ScratchFolder folder;
    EXPECT_THROW(CsvReader(folder.Path("")), InputError);
}

TEST(Csv, ContinuesAfterABadRow)
{
    const ScratchFolder folder;
    CsvReader reader(folder.Write("rows.csv", "a,b\n1,2\n3\n5,6\n"));
    ASSERT_TRUE(reader.Next());
    EXPECT_THROW(reader.Next(), InputError);
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(reader.Number(1), 6.0);
    EXPECT_EQ(reader.Line(), 4U);
    EXPECT_FALSE(reader.Next());
}

TEST(Csv, ContinuesAfterALineThatIsTooLong)
{
    const ScratchFolder folder;
    const std::string endless(5 * CsvReader::kLongestLine, 'x');
    CsvReader reader(folder.Write("rows.csv", "a,b\n" + endless + "\n5,6\n" + endless));
    EXPECT_THROW(reader.Next(), InputError);
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(reader.Field(0), "5");
    EXPECT_EQ(reader.Line(), 3U);
    EXPECT_THROW(reader.Next(), InputError);
    EXPECT_FALSE(reader.Next());
}

TEST(Csv, AcceptsALineOfMaximalLength)
{
    const std::string longest(CsvReader::kLongestLine - 2, 'x');
    EXPECT_EQ(RowsOf("a,b\n" + longest + ",y\n1,2\n"), (Rows{
                                                           {longest, "y"},
                                                           {"1",     "2"}
    }));
}

TEST(Csv, ColumnsAreFoundByName)
{
    const ScratchFolder folder;
    const CsvReader reader(folder.Write("rows.csv", "h,N,N,E\n"));
    EXPECT_EQ(reader.Find("E"), 3U);
    EXPECT_EQ(reader.Find("e"), std::nullopt);
    EXPECT_EQ(reader.Require("h"), 0U);
    EXPECT_THROW(reader.Find("N"), InputError) << "appears twice";
    EXPECT_THROW(reader.Require("x"), InputError) << "is missing";
}

TEST(Csv, AnInvalidNumberIsReportedWithColumnAndText)
{
    const ScratchFolder folder;
    CsvReader reader(folder.Write("rows.csv", "a;h\n1;112,5\n"));
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(reader.Number(0), 1.0);
    try {
        (void)reader.Number(1);
        FAIL() << "taken";
    } catch (const InputError& error) {
        EXPECT_THAT(error.what(), EndsWith("rows.csv:2: h is '112,5', not a finite number"));
    }
}

TEST(Csv, RejectsAFileAboveTheLimitWithoutReadingOn)
{
    const ScratchFolder folder;
    std::string content = "a,b\n";
    while (content.size() < 3 << 20)
        content += "1,2\n";
    const std::string path = folder.Write("rows.csv", content);
    CsvReader whole(path, content.size());
    EXPECT_EQ(AllRows(whole).size(), (content.size() - 4) / 4) << "the limit itself is allowed";

    CsvReader limited(path, 2 << 20);
    try {
        AllRows(limited);
        FAIL() << "read";
    } catch (const InputError& error) {
        EXPECT_THAT(error.what(), EndsWith("rows.csv: is larger than 2 MiB"));
    }
    EXPECT_TRUE(limited.Failed());
    EXPECT_LE(limited.BytesRead(), (2 << 20) + (1 << 16)) << "one block beyond the limit at most";
}

RC_GTEST_PROP(Csv, AnyContentIsReadOrAnInputError, (const std::string& content))
{
    const ScratchFolder folder;
    try {
        CsvReader reader(folder.Write("rows.csv", "a,b\n" + content));
        for (;;) {
            try {
                if (!reader.Next()) break;
                RC_ASSERT(reader.Field(1).size() <= content.size());
            } catch (const InputError&) {
                RC_ASSERT(reader.Line() > 1U);
            }
        }
    } catch (const InputError& error) {
        RC_FAIL(error.what());
    }
}

// Quoting every field and writing it back yields the same fields, whatever they contain.
RC_GTEST_PROP(Csv, QuotedTextIsReadBackUnchanged, (std::vector<std::string> fields))
{
    RC_PRE(!fields.empty());
    std::string header;
    std::string row;
    for (std::string& field : fields) {
        std::erase_if(field, [](char c) { return c == '\n'; });
        if (!row.empty()) {
            header += ';';
            row += ';';
        }
        header += 'c';
        row += '"';
        for (const char c : field)
            row += c == '"' ? "\"\"" : std::string(1, c);
        row += '"';
    }
    if (fields.size() == 1) header += ';'; // otherwise the separator would be unknown
    RC_ASSERT(RowsOf(header + '\n' + row + '\n') == Rows{fields});
}

} // namespace
