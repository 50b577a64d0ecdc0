#include "foundation/XMLNode.h"

#include <gtest/gtest.h>

using vorlek::XMLNode;

TEST(XMLNode, TypesHaveTheNumbersThatTheMessageLayerRelyOn) {
    EXPECT_EQ(0, XMLNode::StartElement);
    EXPECT_EQ(1, XMLNode::EndElement);
    EXPECT_EQ(2, XMLNode::Text);
}

TEST(XMLNode, HoldsTypeAndValue) {
    const XMLNode node(XMLNode::Text, L"value");
    EXPECT_EQ(XMLNode::Text, node.GetType());
    EXPECT_EQ(L"value", node.GetValue());
}
