package com.kiv.rcp.base;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import java.util.ArrayList;
import java.util.List;
import javax.xml.parsers.DocumentBuilder;
import javax.xml.parsers.DocumentBuilderFactory;
import javax.xml.parsers.ParserConfigurationException;
import javax.xml.transform.OutputKeys;
import javax.xml.transform.Transformer;
import javax.xml.transform.TransformerException;
import javax.xml.transform.TransformerFactory;
import javax.xml.transform.dom.DOMSource;
import javax.xml.transform.stream.StreamResult;
import org.w3c.dom.Document;
import org.w3c.dom.Element;
import org.w3c.dom.Node;
import org.xml.sax.SAXException;

/** A provisioning manifest: domain-object/object-data/install/installfeature/requirements/feature. */
final class FeatureManifest {
  private static final String DISALLOW_DOCTYPE =
      "http://apache.org/xml/features/disallow-doctype-decl";

  private final Path file;
  private final Document document;
  private final Element install;

  private FeatureManifest(Path file, Document document) throws IOException {
    this.file = file;
    this.document = document;
    Element element = document.getDocumentElement();
    for (String name : List.of("domain-object", "object-data", "install")) {
      List<Element> found = children(element, name);
      if (found.isEmpty()) throw new IOException(file + " has no element " + name);
      element = found.get(0);
    }
    install = element;
  }

  static FeatureManifest read(Path file) throws IOException {
    try {
      DocumentBuilderFactory factory = DocumentBuilderFactory.newInstance();
      factory.setFeature(DISALLOW_DOCTYPE, true);
      DocumentBuilder builder = factory.newDocumentBuilder();
      builder.setErrorHandler(null);
      return new FeatureManifest(file, builder.parse(file.toFile()));
    } catch (ParserConfigurationException | SAXException bad) {
      throw new IOException(file + ": " + bad.getMessage(), bad);
    }
  }

  List<Feature> features() throws IOException {
    List<Feature> result = new ArrayList<>();
    for (Element element : featureElements()) {
      String action = element.getAttribute("action");
      if (!action.equals("install") && !action.equals("uninstall")) {
        throw new IOException(file + ": no such action: " + action);
      }
      result.add(
          new Feature(
              element.getAttribute("id"),
              element.getAttribute("version"),
              element.getAttribute("url"),
              action.equals("install")));
    }
    return result;
  }

  /** Notes a feature as installed, in place of any other version, or takes it out. */
  void carryOver(Feature feature) {
    for (Element known : featureElements()) {
      if (known.getAttribute("id").equals(feature.id())) drop(known);
    }
    if (feature.install()) append(feature);
  }

  /** Replaces the file whole. */
  void save() throws IOException {
    Path temporary = Files.createTempFile(file.getParent(), "manifest", ".tmp");
    try {
      Transformer transformer = TransformerFactory.newInstance().newTransformer();
      transformer.setOutputProperty(OutputKeys.ENCODING, "UTF-8");
      transformer.transform(new DOMSource(document), new StreamResult(temporary.toFile()));
      Files.move(temporary, file, StandardCopyOption.ATOMIC_MOVE);
    } catch (TransformerException bad) {
      throw new IOException(file + ": " + bad.getMessage(), bad);
    } finally {
      Files.deleteIfExists(temporary);
    }
  }

  private List<Element> featureElements() {
    List<Element> result = new ArrayList<>();
    for (Element group : children(install, "installfeature")) {
      List<Element> requirements = children(group, "requirements");
      if (!requirements.isEmpty()) result.addAll(children(requirements.get(0), "feature"));
    }
    return result;
  }

  /** A feature has a group of its own, which goes with it. */
  private void drop(Element feature) {
    Element requirements = (Element) feature.getParentNode();
    requirements.removeChild(feature);
    if (children(requirements, "feature").isEmpty()) {
      install.removeChild(requirements.getParentNode());
    }
  }

  private void append(Feature feature) {
    Element group = document.createElement("installfeature");
    group.setAttribute("id", feature.id());
    group.setAttribute("description", feature.id() + " " + feature.version());
    Element element = document.createElement("feature");
    element.setAttribute("id", feature.id());
    element.setAttribute("version", feature.version());
    element.setAttribute("url", feature.url());
    element.setAttribute("action", "install");
    install
        .appendChild(group)
        .appendChild(document.createElement("requirements"))
        .appendChild(element);
  }

  private static List<Element> children(Element parent, String name) {
    List<Element> result = new ArrayList<>();
    for (Node node = parent.getFirstChild(); node != null; node = node.getNextSibling()) {
      if (node instanceof Element element && element.getTagName().equals(name)) result.add(element);
    }
    return result;
  }
}
