#pragma once

// The pattern of an e-mail address: a dot-atom or a quoted local part, "@", then a domain of at least two labels or a
// bracketed address literal (the addr-spec of RFC 5322, section 3.4.1, in the shape that mail servers take).

#define PERSON_EMAIL_LOCAL_PART \
    R"re((?:[\w!#$%&'*+/=?^`{|}~-]+(?:\.[\w!#$%&'*+/=?^`{|}~-]+)*|"(?:[^\0\s"\\]|\\[^\0\n\r])*"))re"
#define PERSON_EMAIL_LABEL R"re([A-Za-z0-9](?:[A-Za-z0-9-]*[A-Za-z0-9])?)re"
#define PERSON_EMAIL_OCTET R"re((2(5[0-5]|[0-4][0-9])|1[0-9][0-9]|[1-9]?[0-9]))re"
#define PERSON_EMAIL_DOMAIN "(?:" PERSON_EMAIL_LABEL R"re(\.)+)re" PERSON_EMAIL_LABEL
#define PERSON_EMAIL_LITERAL                                                    \
    R"re(\[(?:(?:)re" PERSON_EMAIL_OCTET R"re()\.){3}(?:)re" PERSON_EMAIL_OCTET \
    R"re(|[A-Za-z\d-]*[A-Za-z\d]:(?:[^\0\s\[\\\]]|\\[^\0\n\r])+)\])re"

#define PERSON_EMAIL_PATTERN PERSON_EMAIL_LOCAL_PART "@(?:" PERSON_EMAIL_DOMAIN "|" PERSON_EMAIL_LITERAL ")"
