<?xml version="1.0" encoding="UTF-8"?>
<!--
  The default viewer of an audit trail: a trail names "audit_trail.xsl" in its stylesheet
  instruction, so a browser that opens the trail with this file beside it shows the sessions,
  their users and projects, and their events, the events of an operation's sub-trail indented
  under it. It only shows the trail; whether the sessions still match their checksums is for
  `zenutl audit verify` to say.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:output method="html" encoding="UTF-8" indent="no"/>

  <xsl:template match="/">
    <html lang="en">
      <head>
        <meta charset="utf-8"/>
        <title>Audit trail</title>
        <style>
          body { font-family: sans-serif; margin: 2em; color: #222; background: #fff; }
          h1 { font-size: 1.4em; }
          h2 { font-size: 1.1em; margin: 0 0 .5em; }
          .session { border: 1px solid #ccc; border-radius: 6px; padding: 1em; margin: 1em 0; }
          .session.open { border-style: dashed; }
          table.facts td { padding: .1em 1em .1em 0; vertical-align: top; }
          table.facts td:first-child { color: #666; }
          ul.events { list-style: none; padding-left: 0; margin: .5em 0; }
          ul.events ul.events { padding-left: 2em; border-left: 2px solid #ddd; }
          ul.events li { margin: .3em 0; }
          .time { color: #666; font-size: .9em; margin-right: .5em; }
          .message { white-space: pre-wrap; }
          .details { white-space: pre-wrap; color: #444; margin-left: 2em; font-size: .95em; }
          .note { color: #666; font-size: .9em; }
        </style>
      </head>
      <body>
        <h1>Audit trail</h1>
        <p class="summary">
          <xsl:value-of select="count(AuditTrail/Session)"/>
          <xsl:choose>
            <xsl:when test="count(AuditTrail/Session) = 1"> session.</xsl:when>
            <xsl:otherwise> sessions.</xsl:otherwise>
          </xsl:choose>
          <span class="note">Use <code>zenutl audit verify</code> to check their checksums.</span>
        </p>
        <xsl:apply-templates select="AuditTrail/Session"/>
      </body>
    </html>
  </xsl:template>

  <xsl:template match="Session">
    <div>
      <xsl:attribute name="class">
        <xsl:text>session</xsl:text>
        <xsl:if test="not(CheckSum)"> open</xsl:if>
      </xsl:attribute>
      <h2>Session <xsl:value-of select="position()"/> &#183; <xsl:value-of select="@Date"/></h2>
      <table class="facts">
        <tr>
          <td>User</td>
          <td>
            <xsl:value-of select="User/@User"/> on <xsl:value-of select="User/@Computer"/>
            <xsl:if test="string(User/@Domain)"> (domain <xsl:value-of select="User/@Domain"/>)</xsl:if>
          </td>
        </tr>
        <xsl:if test="normalize-space(User)">
          <tr><td>User info</td><td><xsl:value-of select="User"/></td></tr>
        </xsl:if>
        <tr><td>Application</td><td><xsl:value-of select="@Application"/></td></tr>
        <tr><td>Project</td><td><xsl:value-of select="@Project"/></td></tr>
        <tr>
          <td>Checksum</td>
          <td>
            <xsl:choose>
              <xsl:when test="CheckSum"><xsl:value-of select="CheckSum"/></xsl:when>
              <xsl:otherwise>none: the session was not closed</xsl:otherwise>
            </xsl:choose>
          </td>
        </tr>
      </table>
      <xsl:apply-templates select="Events"/>
    </div>
  </xsl:template>

  <xsl:template match="Events">
    <xsl:if test="Event">
      <ul class="events">
        <xsl:apply-templates select="Event"/>
      </ul>
    </xsl:if>
  </xsl:template>

  <xsl:template match="Event">
    <li>
      <span class="time"><xsl:value-of select="@Date"/></span>
      <span class="message"><xsl:value-of select="text()"/></span>
      <xsl:if test="string(Details)">
        <div class="details"><xsl:value-of select="Details"/></div>
      </xsl:if>
      <xsl:apply-templates select="Events"/>
    </li>
  </xsl:template>
</xsl:stylesheet>
