// SPDX-License-Identifier: MIT
#include "framework/core/AtomicFile.h"
#include "framework/core/MessageBox.h"
#include "framework/core/ParseNumber.h"
#include "framework/core/Paths.h"
#include "framework/core/core.h"
#include "tests/framework/core/Folder.h"
#include "tests/memory/Rows.h"

#include <array>

namespace sweep {

namespace {

constexpr const wchar_t* kLong = L"a text that is too long to be stored within the object";
constexpr const char* kNarrow = "another text that is too long to be stored within the object";

struct Texts
{
    CString text = kLong;
    CString result;
    int n = 0;
};

std::string Describe(const Texts& t)
{
    return framework::ToUtf8(t.text.GetString()) + '|' + framework::ToUtf8(t.result.GetString())
           + '|' + std::to_string(t.n);
}

Row Throwing(const char* covers, std::function<void(Texts&)> run)
{
    return Operation<Texts>(covers, Shortage::Throws, std::move(run), Describe);
}

void AddTextRows(std::vector<Row>& rows)
{
    const auto add = [&rows](const char* covers, std::function<void(Texts&)> run) {
        rows.push_back(Throwing(covers, std::move(run)));
    };
    add("CString::CString", [](Texts& t) { t.result = CString(kLong); });
    add("CString::CString", [](Texts& t) { t.result = CString(kLong, 30); });
    add("CString::CString", [](Texts& t) { t.result = CString(kNarrow); });
    add("CString::CString", [](Texts& t) { t.result = CString(kNarrow, 30); });
    add("CString::CString", [](Texts& t) { t.result = CString(L'x', 40); });
    add("CString::CString", [](Texts& t) { t.result = CString(std::wstring_view(kLong)); });
    add("CString::CString", [](Texts& t) { t.result = CString(t.text); });
    add("CString::operator=", [](Texts& t) { t.result = kLong; });
    add("CString::operator=", [](Texts& t) { t.result = kNarrow; });
    add("CString::operator=", [](Texts& t) { t.result = t.text; });
    add("CString::operator+=", [](Texts& t) { t.text += CString(L'x', 300); });
    add("CString::operator+=", [](Texts& t) { t.text += kLong; });
    add("CString::operator+=", [](Texts& t) {
        CString grown(t.text);
        for (int i = 0; i < 60; ++i)
            grown += L'x';
        t.result = std::move(grown);
        t.n = 60;
    });
    add("CString::Append", [](Texts& t) { t.text.Append(kLong); });
    add("CString::GetBuffer CString::ReleaseBuffer", [](Texts& t) {
        t.text.GetBuffer(500)[0] = L'A';
        t.text.ReleaseBuffer();
        t.n = t.text.GetLength();
    });
    add("CString::Mid", [](Texts& t) { t.result = t.text.Mid(3); });
    add("CString::Mid", [](Texts& t) { t.result = t.text.Mid(3, 30); });
    add("CString::Left", [](Texts& t) { t.result = t.text.Left(30); });
    add("CString::Right", [](Texts& t) { t.result = t.text.Right(30); });
    add("CString::SpanIncluding", [](Texts& t) { t.result = t.text.SpanIncluding(L"a texhisol"); });
    add("CString::SpanExcluding", [](Texts& t) { t.result = t.text.SpanExcluding(L"w"); });
    add("CString::Tokenize", [](Texts& t) { t.result = t.text.Tokenize(L"w", t.n); });
    add("CString::Replace", [](Texts& t) { t.n = t.text.Replace(L"o", L"a much longer part"); });
    add("CString::Insert", [](Texts& t) { t.n = t.text.Insert(5, kLong); });
    add("CString::Insert", [](Texts& t) {
        CString grown(t.text);
        for (int i = 0; i < 60; ++i)
            grown.Insert(2, L'x');
        t.result = std::move(grown);
    });
    add("CString::Format", [](Texts& t) { t.text.Format(L"%s%s%d", t.text, t.text, 7); });
    add("CString::AppendFormat", [](Texts& t) { t.text.AppendFormat(L"%60.3f", 1.5); });
    add("CString::operator+", [](Texts& t) { t.result = t.text + L" and more"; });
    add("CString::operator+", [](Texts& t) { t.result = L"more and " + t.text; });
    add("framework::FormatArgument::FormatArgument framework::FormatArgument::AsText",
        [](Texts& t) { t.result = CString(framework::FormatArgument(t.text).AsText(40)); });
    add("framework::AppendFormatted", [](Texts& t) {
        std::wstring out;
        const framework::FormatArgument arguments[] = {framework::FormatArgument(t.text)};
        framework::AppendFormatted(out, L"%90s", arguments, 1);
        t.result = CString(std::move(out));
    });
    add("framework::ToUtf8 framework::FromUtf8", [](Texts& t) {
        t.result = CString(framework::FromUtf8(framework::ToUtf8(t.text.GetString())));
    });
    add("framework::ParseDouble framework::ParseInteger", [](Texts& t) {
        const std::wstring digits(80, L'7');
        t.n = static_cast<int>(framework::ParseDouble(std::wstring_view(digits)).used
                               + framework::ParseInteger(std::wstring_view(digits)).used);
    });
    rows.push_back(Operation<Texts>(
        "CString::SetAt CString::Delete CString::Remove CString::Replace CString::Trim "
        "CString::TrimLeft CString::TrimRight CString::MakeUpper CString::MakeLower "
        "CString::MakeReverse CString::Empty CString::operator=",
        Shortage::Never,
        [](Texts& t) {
            t.text.SetAt(0, L'X');
            t.n += t.text.Delete(1, 2) + t.text.Remove(L'o') + t.text.Replace(L't', L'u');
            t.text.Trim().TrimLeft().TrimRight();
            t.text.Trim(L'X').TrimLeft(L'e').TrimRight(L'c');
            t.text.Trim(L"xu").TrimLeft(L"x").TrimRight(L"j");
            t.text.MakeUpper().MakeLower().MakeReverse();
            t.result = L'y';
            t.result.Empty();
            t.result = L'z';
        },
        Describe));
    rows.push_back(WithoutMemory(
        "CString::Find CString::ReverseFind CString::FindOneOf CString::Compare "
        "CString::CompareNoCase CString::operator[] CString::GetAt "
        "framework::FormatArgument::AsReal framework::FormatArgument::AsSigned "
        "framework::FormatArgument::AsUnsigned MultiByteToWideChar WideCharToMultiByte",
        [] {
            static const CString text = kLong;
            EXPECT_EQ(text.Find(L't') + text.Find(L"text") + text.ReverseFind(L'z'), 2 + 2 - 1);
            EXPECT_EQ(text.FindOneOf(L"xt"), 2);
            EXPECT_EQ(text.Compare(kLong) + text.CompareNoCase(kLong), 0);
            EXPECT_EQ(text[0], text.GetAt(0));
            const framework::FormatArgument number(2.5);
            EXPECT_EQ(number.AsReal(), 2.5);
            EXPECT_EQ(number.AsSigned(), 2);
            EXPECT_EQ(number.AsUnsigned(), 2U);
            wchar_t wide[80];
            EXPECT_GT(MultiByteToWideChar(CP_UTF8, 0, kNarrow, -1, wide, 80), 0);
            char narrow[80];
            EXPECT_GT(WideCharToMultiByte(CP_UTF8, 0, wide, -1, narrow, 80, nullptr, nullptr), 0);
        }));
}

struct Arrays
{
    Arrays()
    {
        for (int i = 0; i < 4; ++i) {
            texts.Add(kLong);
            numbers.Add(i);
            others.Add(CString(L'x', 20 + i));
        }
        others.Add(kLong);
    }
    CArray<CString> texts, others;
    CArray<double> numbers;
};

std::string Describe(const Arrays& a)
{
    std::string text;
    for (INT_PTR i = 0; i < a.texts.GetSize(); ++i)
        text += framework::ToUtf8(a.texts[i].GetString()) + ',';
    for (INT_PTR i = 0; i < a.numbers.GetSize(); ++i)
        text += Text(a.numbers[i]);
    return text;
}

void AddArrayRows(std::vector<Row>& rows)
{
    const auto add = [&rows](const char* covers, std::function<void(Arrays&)> run) {
        rows.push_back(Operation<Arrays>(covers, Shortage::Throws, std::move(run),
                                         [](const Arrays& a) { return Describe(a); }));
    };
    add("CArray::Add", [](Arrays& a) { a.texts.Add(a.texts[0]); });
    add("CArray::SetSize", [](Arrays& a) { a.texts.SetSize(a.texts.GetSize() + 20); });
    add("CArray::SetAt", [](Arrays& a) { a.texts.SetAt(1, a.others[0] + kLong); });
    add("CArray::SetAtGrow",
        [](Arrays& a) { a.texts.SetAtGrow(a.texts.GetSize() + 7, a.others[1]); });
    add("CArray::Append", [](Arrays& a) { a.texts.Append(a.others); });
    add("CArray::Copy", [](Arrays& a) { a.texts.Copy(a.others); });
    add("CArray::Copy", [](Arrays& a) {
        CArray<double> more;
        more.SetSize(20);
        a.numbers.Copy(more);
    });
    add("CArray::InsertAt",
        [](Arrays& a) { a.numbers.InsertAt(1, static_cast<double>(a.numbers.GetSize()), 30); });
    add("CArray::InsertAt", [](Arrays& a) { a.numbers.InsertAt(2, &a.numbers); });
    add("CArray::FreeExtra", [](Arrays& a) { // of 5 elements
        a.numbers.FreeExtra();
        a.numbers[0] += 1.0;
    });
    rows.push_back(WithoutMemory(
        "CArray::RemoveAt CArray::RemoveAll CArray::GetAt CArray::GetData CArray::ElementAt", [] {
            CArray<double> none;
            none.RemoveAt(0);
            none.RemoveAll();
            EXPECT_EQ(none.GetData(), nullptr);
        }));
}

struct Files
{
    Files() { folder.Write("a file with a name that is too long to lie inside", "old"); }

    TestFolder folder;
    CString path = folder.File(L"a file with a name that is too long to lie inside");
    CString other = folder.File(L"another file with a name that is too long to lie inside");
    std::string bytes = framework::ToUtf8(path.GetString());
    CFile file;
    CString result;
    int n = 0;
};

std::string Describe(const Files& f)
{
    std::string text = std::to_string(f.n) + (f.file.IsOpen() ? " open" : " closed");
    for (const std::string& name : f.folder.Names())
        text += ", " + name + ": "
                + (std::filesystem::is_directory(f.folder.Native() / name) ? "folder"
                                                                           : f.folder.Read(name));
    // The folder has another name each time.
    const std::string result = framework::ToUtf8(f.result.GetString());
    return text + ", " + result.substr(result.rfind('/') + 1);
}

void AddFileRows(std::vector<Row>& rows)
{
    const auto add = [&rows](const char* covers, Shortage shortage,
                             std::function<void(Files&)> run) {
        rows.push_back(Operation<Files>(covers, shortage, std::move(run),
                                        [](const Files& f) { return Describe(f); }));
    };
    add("CFile::Open", Shortage::Reports,
        [](Files& f) { f.n = f.file.Open(f.path, CFile::modeRead); });
    add("CFile::Rename", Shortage::Reports, [](Files& f) { f.n = CFile::Rename(f.path, f.other); });
    add("CFile::Remove", Shortage::Reports, [](Files& f) { f.n = CFile::Remove(f.path); });
    add("framework::ReplaceFileContent", Shortage::Reports,
        [](Files& f) { f.n = framework::ReplaceFileContent(f.path, "a new content") ? 1 : 0; });
    add("framework::FileReplacement::FileReplacement framework::FileReplacement::Write "
        "framework::FileReplacement::Commit framework::FileReplacement::Error",
        Shortage::Throws, [](Files& f) {
            framework::FileReplacement file(f.bytes);
            const bool done = file.Write("a new ") && file.Write("content") && file.Commit();
            f.n = done && file.Error() == 0 ? 1 : 0;
        });
    add("framework::CommitTogether", Shortage::Throws, [](Files& f) {
        framework::FileReplacement file(f.bytes);
        framework::FileReplacement* const files[] = {&file};
        f.n = file.Write("a new content") && framework::CommitTogether(files) ? 1 : 0;
    });
    add("framework::MakeFolder", Shortage::Reports,
        [](Files& f) { f.n = framework::MakeFolder(f.other) ? 1 : 0; });
    add("GetFileAttributesW", Shortage::Reports,
        [](Files& f) { f.n = GetFileAttributesW(f.path) == FILE_ATTRIBUTE_NORMAL ? 1 : 0; });
    add("GetModuleFileNameW", Shortage::Reports, [](Files& f) {
        std::array<wchar_t, 4096> name;
        f.n = GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size())) > 0 ? 1 : 0;
    });
    add("framework::SetModulePath", Shortage::Throws, [](Files& f) {
        static int length = 100;
        length += 100; // more than the last name
        framework::SetModulePath(CString(L'x', length));
        f.n = 1;
    });
    add("framework::ApplicationDataFolder", Shortage::Throws,
        [](Files& f) { f.result = framework::ApplicationDataFolder(); });
    add("framework::ApplicationStateFolder", Shortage::Throws,
        [](Files& f) { f.result = framework::ApplicationStateFolder(); });
    add("framework::FollowLinks", Shortage::Throws, [](Files& f) {
        const std::string path = framework::FollowLinks(f.bytes);
        f.n = path == f.bytes ? 1 : 0;
    });
    rows.push_back(WithoutMemory(
        "CFile::Abort CFile::Close CFile::Flush CFile::GetLength CFile::GetPosition CFile::Read "
        "CFile::Seek CFile::Write CFile::~CFile",
        [] {
            static const Files files;
            static CFile file;
            static const bool isOpen = file.Open(files.path, CFile::modeReadWrite) != 0;
            EXPECT_TRUE(isOpen);
            char bytes[8];
            EXPECT_EQ(file.Seek(0, CFile::begin), 0U);
            EXPECT_EQ(file.Write("new", 3), 3U);
            EXPECT_EQ(file.GetPosition() + file.GetLength(), 6U);
            EXPECT_EQ(file.Read(bytes, 8), 0U);
            EXPECT_TRUE(file.Flush());
            CFile none;
            none.Abort();
            EXPECT_TRUE(none.Close() || !none.IsOpen());
        }));
}

class Created : public CObject
{
    DECLARE_DYNCREATE(Created)
};
IMPLEMENT_DYNCREATE(Created, CObject)

struct Objects
{
    std::unique_ptr<CObject> made;
};

void AddObjectRows(std::vector<Row>& rows)
{
    rows.push_back(Operation<Objects>(
        "CRuntimeClass::CreateObject CObject::~CObject", Shortage::Throws,
        [](Objects& o) { o.made.reset(RUNTIME_CLASS(Created)->CreateObject()); },
        [](const Objects& o) { return std::string(o.made ? "made" : "none"); }));
    rows.push_back(WithoutMemory(
        "CObject::GetRuntimeClass CObject::IsKindOf CRuntimeClass::IsDerivedFrom", [] {
            const Created object;
            EXPECT_EQ(object.GetRuntimeClass(), RUNTIME_CLASS(Created));
            EXPECT_TRUE(object.IsKindOf(RUNTIME_CLASS(CObject)));
            EXPECT_TRUE(RUNTIME_CLASS(Created)->IsDerivedFrom(RUNTIME_CLASS(CObject)));
        }));
    rows.push_back(WithoutMemory(
        "MessageBoxW framework::SetMessageBoxHandler framework::RemoveTemporaryFilesOnSignals", [] {
            const auto before = framework::SetMessageBoxHandler(
                [](const wchar_t*, const wchar_t*, unsigned) { return IDYES; });
            EXPECT_EQ(MessageBoxW(nullptr, kLong, kLong, MB_YESNO), IDYES);
            framework::SetMessageBoxHandler(before);
            framework::RemoveTemporaryFilesOnSignals();
        }));
    rows.push_back(WithoutMemory("CRect CPoint CSize", [] {
        CRect rect(1, 2, 3, 4);
        EXPECT_TRUE(rect.PtInRect(CPoint(1, 2)));
        EXPECT_EQ(rect.Size().cx, 2);
    }));
}

} // namespace

std::vector<Row> FrameworkRows()
{
    std::vector<Row> rows;
    AddTextRows(rows);
    AddArrayRows(rows);
    AddFileRows(rows);
    AddObjectRows(rows);
    return rows;
}

} // namespace sweep
